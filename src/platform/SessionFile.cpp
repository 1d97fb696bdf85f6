#include "platform/SessionFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

#include "common/BytePacking.h"
#include "platform/Text.h"
#include "platform/Threads.h"

namespace zel {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::uint8_t kMagic[] = {'Z', 'E', 'L', 'S', 'E', 'S', 'S', 0x1A};
constexpr std::uint32_t kVersion = 1;

constexpr auto kLastCall = static_cast<std::uint8_t>(DriverCall::Kind::Interface);
constexpr std::uint8_t kClock = 11, kDescription = 12;

// Behind the record's size.
constexpr std::size_t kHeadBytes = 48, kPieces = 4;

/// More than a request with its header; behind it lies what an earlier transfer left in a shared buffer.
constexpr std::size_t kSharedBytes = 128;
/// A packet or a sector; larger areas are there for pictures, and what they hold before says nothing.
constexpr std::size_t kDataBytes = 512;

/// The direct transfer methods of a control code, whose area the driver may read as well as write.
bool UsesAreaBothWays(std::uint32_t code) {
  return (code & 3) == 1 || (code & 3) == 2;
}

Bytes BytesOf(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// Numbers at the end of a vector.
class Packer {
 public:
  Packer& U8(std::uint8_t value) {
    bytes_.push_back(value);
    return *this;
  }
  Packer& U32(std::uint32_t value) { return Little(value, 4); }
  Packer& U64(std::uint64_t value) { return Little(value, 8); }
  Packer& Piece(Bytes piece) {
    U32(static_cast<std::uint32_t>(piece.size()));
    bytes_.insert(bytes_.end(), piece.begin(), piece.end());
    return *this;
  }
  const std::vector<std::uint8_t>& All() const { return bytes_; }

 private:
  Packer& Little(std::uint64_t value, unsigned size) {
    for (unsigned n = 0; n < size; ++n) bytes_.push_back(ByteOf(value, n));
    return *this;
  }

  std::vector<std::uint8_t> bytes_;
};

/// Numbers from the front of a span. Past its end everything is 0 or empty, and `Broken` is true.
class Unpacker {
 public:
  explicit Unpacker(Bytes bytes) : bytes_(bytes) {}

  std::uint8_t U8() { return static_cast<std::uint8_t>(Little(1)); }
  std::uint32_t U32() { return static_cast<std::uint32_t>(Little(4)); }
  std::uint64_t U64() { return Little(8); }
  Bytes Take(std::size_t size) {
    if (size > bytes_.size()) {
      broken_ = true;
      bytes_ = {};
      return {};
    }
    const Bytes taken = bytes_.first(size);
    bytes_ = bytes_.subspan(size);
    return taken;
  }
  Bytes Piece() { return Take(U32()); }
  bool Broken() const { return broken_; }
  std::size_t Left() const { return bytes_.size(); }

 private:
  std::uint64_t Little(std::size_t size) {
    std::uint64_t value = 0;
    unsigned n = 0;
    for (const std::uint8_t byte : Take(size)) value |= std::uint64_t{byte} << (8 * n++);
    return value;
  }

  Bytes bytes_;
  bool broken_ = false;
};

/// Reads records one after the other and checks that they make a session.
class SessionParser {
 public:
  explicit SessionParser(Session* session) : session_(*session), in_(session->bytes) {}

  bool Parse(std::string* error) {
    const Bytes magic = in_.Take(sizeof kMagic);
    if (!std::ranges::equal(magic, kMagic)) {
      *error = "it is not a recorded session";
      return false;
    }
    if (const std::uint32_t version = in_.U32(); in_.Broken() || version != kVersion) {
      *error = "its format has version " + std::to_string(version) + ", not " + std::to_string(kVersion);
      return false;
    }
    for (std::size_t number = 1; !described_; ++number) {
      if (in_.Left() == 0) {
        *error = "the recording was never finished";
        return false;
      }
      const std::size_t at = session_.bytes.size() - in_.Left();
      if (const char* wrong = Record()) {
        *error = "record " + std::to_string(number) + " at byte " + std::to_string(at) + ": " + wrong;
        return false;
      }
    }
    if (in_.Left() != 0) *error = "something follows the end of the session";
    return in_.Left() == 0;
  }

 private:
  /// What is wrong with the next record, or null.
  const char* Record() {
    Unpacker record(in_.Piece());
    if (in_.Broken()) return "it is cut off";
    const std::uint8_t kind = record.U8();
    SessionRecord call;
    call.result.ok = record.U8() != 0;
    record.Take(2);
    call.handle = record.U32();
    call.request.transfer = record.U32();
    call.request.code = record.U32();
    call.request.position = record.U64();
    call.result.bytes = record.U32();
    call.result.error = static_cast<DriverError>(record.U32());
    call.microseconds = record.U64();
    call.request.inSize = record.U32();
    call.request.outSize = record.U32();
    const Bytes path = record.Piece(), in = record.Piece(), data = record.Piece();
    call.received = record.Piece();
    if (record.Broken() || record.Left() != 0) return "its pieces do not fill it";
    if (kind == kDescription) {
      session_.description.assign(call.received.begin(), call.received.end());
      described_ = true;
    } else if (kind == kClock) {
      session_.clock.push_back(call.request.position);
    } else if (kind <= kLastCall) {
      call.request.kind = static_cast<DriverCall::Kind>(kind);
      if (const char* wrong = CheckCall(call)) return wrong;
      call.request.path.assign(path.begin(), path.end());
      call.request.in.assign(in.begin(), in.end());
      call.request.data.assign(data.begin(), data.end());
      session_.records.push_back(std::move(call));
    } else {
      return "it is of an unknown kind";
    }
    return nullptr;
  }

  const char* CheckCall(const SessionRecord& call) {
    const DriverCall::Kind kind = call.request.kind;
    if (kind == DriverCall::Kind::Interface) return nullptr;
    if (call.received.size() > call.request.outSize) return "more was received than asked for";
    if (kind != DriverCall::Kind::Open)
      return open_.contains(call.handle) ? nullptr : "it uses no open handle";
    if (call.result.ok && !open_.insert(call.handle).second) return "it opens a handle twice";
    return nullptr;
  }

  Session& session_;
  Unpacker in_;
  std::set<std::uint32_t> open_;
  bool described_ = false;
};

}  // namespace

SessionRequest SessionRequest::Of(const DriverCall& call) {
  SessionRequest request{.kind = call.kind,
                         .transfer = call.transfer,
                         .code = call.code,
                         .position = call.position,
                         .inSize = static_cast<std::uint32_t>(call.in.size()),
                         .outSize = static_cast<std::uint32_t>(call.out.size()),
                         .path = {},
                         .in = {},
                         .data = {}};
  if (call.open != nullptr) {
    request.path = ToUtf8(call.open->path);
    request.code = call.open->access;
    request.position = call.open->share | std::uint64_t{call.open->flags} << 32;
  }
  if (call.interfaceClass != nullptr) {
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(call.interfaceClass);
    request.in.assign(bytes, bytes + sizeof(GUID));
    return request;
  }
  const bool shared = !call.in.empty() && call.in.data() == call.out.data();
  const Bytes in = shared ? call.in.first(std::min(call.in.size(), kSharedBytes)) : call.in;
  request.in.assign(in.begin(), in.end());
  const bool transfers = call.kind == DriverCall::Kind::Control || call.kind == DriverCall::Kind::Begin;
  if (transfers && !shared && UsesAreaBothWays(call.code) && call.out.size() <= kDataBytes)
    request.data.assign(call.out.begin(), call.out.end());
  return request;
}

bool ParseSession(std::vector<std::uint8_t> bytes, Session* session, std::string* error) {
  *session = {};
  session->bytes = std::move(bytes);
  return SessionParser(session).Parse(error);
}

bool ReadSession(const std::filesystem::path& path, Session* session, std::string* error) try {
  std::error_code failed;
  const auto size = std::filesystem::file_size(path, failed);
  const FilePtr file = failed ? nullptr : OpenFile(path, "rb");
  if (file == nullptr) {
    *error = failed ? failed.message() : std::generic_category().message(errno);
    return false;
  }
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size));
  bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file.get()));
  return ParseSession(std::move(bytes), session, error);
} catch (const std::bad_alloc&) {
  *error = "the memory is too small for it";
  return false;
}

// ---- writing

SessionWriter::SessionWriter(const std::filesystem::path& path)
    : target_(path), temporary_(std::filesystem::path(path) += ".part"), startNs_(NowNs()) {
  file_ = OpenFile(temporary_, "wb");
  if (file_ == nullptr) Fail(errno);
  Append(kMagic);
  Append(Packer().U32(kVersion).All());
}

SessionWriter::~SessionWriter() {
  if (file_ == nullptr) return;
  file_.reset();
  std::error_code ignored;
  std::filesystem::remove(temporary_, ignored);
}

std::uint64_t SessionWriter::Microseconds() const {
  return (NowNs() - startNs_) / 1000;
}

void SessionWriter::Write(SessionRecord record) {
  record.microseconds = Microseconds();
  const std::lock_guard lock(mutex_);
  Put(static_cast<std::uint8_t>(record.request.kind), record);
}

void SessionWriter::WriteClock(std::uint64_t milliseconds) {
  SessionRecord record;
  record.request.position = milliseconds;
  record.microseconds = Microseconds();
  const std::lock_guard lock(mutex_);
  Put(kClock, record);
}

bool SessionWriter::Finish(const std::string& description) {
  SessionRecord record;
  record.received = BytesOf(description);
  record.microseconds = Microseconds();
  const std::lock_guard lock(mutex_);
  Put(kDescription, record);
  if (file_ != nullptr && std::fclose(file_.release()) != 0) Fail(errno);
  if (!error_.empty()) return false;
  std::error_code failed;
  std::filesystem::rename(temporary_, target_, failed);
  if (failed) error_ = failed.message();
  return !failed;
}

std::string SessionWriter::Error() const {
  const std::lock_guard lock(mutex_);
  return error_;
}

void SessionWriter::Put(std::uint8_t kind, const SessionRecord& record) {
  const SessionRequest& request = record.request;
  const std::size_t size = kHeadBytes + kPieces * 4 + request.path.size() + request.in.size() +
                           request.data.size() + record.received.size();
  Packer head;
  head.U32(static_cast<std::uint32_t>(size)).U8(kind).U8(record.result.ok ? 1 : 0).U8(0).U8(0);
  head.U32(record.handle).U32(request.transfer).U32(request.code).U64(request.position);
  head.U32(record.result.bytes).U32(static_cast<std::uint32_t>(record.result.error));
  head.U64(record.microseconds).U32(request.inSize).U32(request.outSize);
  head.Piece(BytesOf(request.path)).Piece(request.in).Piece(request.data);
  head.U32(static_cast<std::uint32_t>(record.received.size()));
  Append(head.All());
  Append(record.received);
}

void SessionWriter::Append(std::span<const std::uint8_t> bytes) {
  if (file_ == nullptr || bytes.empty()) return;
  if (std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size()) Fail(errno);
}

void SessionWriter::Fail(int systemError) {
  if (error_.empty()) error_ = std::generic_category().message(systemError);
  file_.reset();
  std::error_code ignored;
  std::filesystem::remove(temporary_, ignored);
}

}  // namespace zel
