#include "platform/ReplayDriverHost.h"

#include <algorithm>
#include <cstdio>
#include <span>
#include <utility>

#include "platform/Text.h"

namespace zel {
namespace {

using Kind = DriverCall::Kind;
using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kToldDifferences = 10;
constexpr std::size_t kShownBytes = 16, kShownBefore = 4;

/// What lies behind every host that never forwards.
class NoDevices : public DriverHost {
 public:
  std::unique_ptr<DriverHandle> Open(const OpenRequest&, DriverError* error) override {
    *error = DriverError::FileNotFound;
    return nullptr;
  }
  std::optional<std::u16string> InterfacePath(const GUID&, std::uint32_t) override { return std::nullopt; }
  void Sleep(std::uint32_t) override {}
  std::uint64_t Milliseconds() override { return 0; }
  void ShowMessage(std::u16string_view) override {}
};

NoDevices& Nothing() {
  static NoDevices nothing;
  return nothing;
}

// ---- words

template <class... Values>
std::string Format(const char* format, Values... values) {
  char text[96];
  std::snprintf(text, sizeof text, format, values...);
  return text;
}

/// Without bytes that are sent: "control 0x222051", "read of 512 bytes".
std::string NameOf(const SessionRequest& request) {
  std::string name = DriverCallName(request.kind);
  switch (request.kind) {
    case Kind::Control:
    case Kind::Begin:
      return name + Format(" 0x%06X", static_cast<unsigned>(request.code));
    case Kind::Read:
      return name + " of " + std::to_string(request.outSize) + " bytes";
    case Kind::Write:
      return name + " of " + std::to_string(request.inSize) + " bytes";
    case Kind::Seek:
      return name + " to " + std::to_string(request.position);
    case Kind::Wait:
      return name + " of " + std::to_string(request.code) + " ms";
    default:
      return name;
  }
}

/// A few bytes from `start` on, without zeros at the end.
std::string Hex(Bytes bytes, std::size_t start) {
  bytes = bytes.subspan(std::min(start, bytes.size()));
  bytes = bytes.first(std::min(bytes.size(), kShownBytes));
  while (bytes.size() > 1 && bytes.back() == 0) bytes = bytes.first(bytes.size() - 1);
  std::string text = start == 0 ? "" : " from byte " + std::to_string(start) + " on";
  for (const std::uint8_t byte : bytes) text += Format(" %02x", unsigned{byte});
  return bytes.empty() ? text + " nothing" : text;
}

const std::vector<std::uint8_t>& Sent(const SessionRequest& request) {
  return request.data.empty() ? request.in : request.data;
}

std::string WithBytes(const SessionRequest& request) {
  return NameOf(request) + (Sent(request).empty() ? "" : Hex(Sent(request), 0));
}

/// Two requests in the words in which they differ.
std::string Comparison(const SessionRequest& expected, const SessionRequest& made) {
  const std::string name = NameOf(expected);
  if (name != NameOf(made))
    return "expected " + WithBytes(expected) + ", the library made " + WithBytes(made);
  for (const auto piece : {&SessionRequest::in, &SessionRequest::data}) {
    const Bytes here = expected.*piece, there = made.*piece;
    if (std::ranges::equal(here, there)) continue;
    const auto first = static_cast<std::size_t>(std::ranges::mismatch(here, there).in1 - here.begin());
    const std::size_t start = first < kShownBytes ? 0 : first - kShownBefore;
    return "expected " + name + Hex(here, start) + ", the library sent" + Hex(there, start);
  }
  const auto rest = [](const SessionRequest& request) {
    if (request.kind == Kind::Open)
      return Format("access 0x%08X, share %u, flags 0x%08X", static_cast<unsigned>(request.code),
                    static_cast<unsigned>(request.position), static_cast<unsigned>(request.position >> 32));
    return Format("transfer %u, areas of %u and %u bytes", static_cast<unsigned>(request.transfer),
                  static_cast<unsigned>(request.inSize), static_cast<unsigned>(request.outSize));
  };
  return "expected " + name + " with " + rest(expected) + ", the library gave " + rest(made);
}

/// The same request wherever in a session it is made.
SessionRequest Anywhere(SessionRequest request) {
  request.transfer = 0;
  return request;
}

std::string LookupKey(const SessionRequest& request) {
  return std::string(request.in.begin(), request.in.end()) + std::to_string(request.code);
}

}  // namespace

ReplayDriverHost::ReplayDriverHost(const Session& session, Tail tail)
    : InterceptingDriverHost(Nothing()), session_(session), tail_(tail) {
  for (const SessionRecord& record : session.records) {
    const SessionRequest& request = record.request;
    if (request.kind == Kind::Interface) {
      LookupsOf(request).records.push_back(&record);
    } else if (request.kind != Kind::Open) {
      handles_.at(record.handle).records.push_back(&record);
    } else {
      Track& opens = OpensOf(request);
      opens.records.push_back(&record);
      const std::size_t opening = opens.records.size();
      const std::string name = request.path + (opening > 1 ? ", open " + std::to_string(opening) : "");
      if (record.result.ok) handles_[record.handle] = {name, request.path, {}};
    }
  }
}

DriverResult ReplayDriverHost::Intercept(DriverCall& call, const Forward&) {
  const SessionRequest request = SessionRequest::Of(call);
  const std::lock_guard lock(mutex_);
  Track& track = TrackOf(call, request);
  if (call.kind == Kind::Close) return Close(track);
  const SessionRecord* const record = Match(track, request);
  if (record == nullptr) return Refuse(track, request);

  ++summary_.matched;
  if (tail_ == Tail::MayVary) seen_[track.path].insert(Anywhere(request));
  if (call.kind == Kind::Interface) {
    call.path = ToUtf16({reinterpret_cast<const char*>(record->received.data()), record->received.size()});
  } else {
    std::ranges::copy(record->received, call.out.begin());
  }
  if (call.kind == Kind::Open && record->result.ok) played_[call.handle] = &handles_[record->handle];
  return record->result;
}

ReplayDriverHost::Track& ReplayDriverHost::TrackOf(const DriverCall& call, const SessionRequest& request) {
  if (call.kind == Kind::Open) return OpensOf(request);
  if (call.kind == Kind::Interface) return LookupsOf(request);
  return *played_.at(call.handle);
}

ReplayDriverHost::Track& ReplayDriverHost::OpensOf(const SessionRequest& request) {
  const std::string& path = request.path;
  return opens_.try_emplace(path, Track{"the opens of " + path, path, {}}).first->second;
}

ReplayDriverHost::Track& ReplayDriverHost::LookupsOf(const SessionRequest& request) {
  Track fresh{"the interface lookups of device " + std::to_string(request.code), {}, {}};
  return lookups_.try_emplace(LookupKey(request), std::move(fresh)).first->second;
}

const SessionRecord* ReplayDriverHost::Match(Track& track, const SessionRequest& request) {
  if (track.AtEnd()) return nullptr;
  const SessionRecord* const record = track.records[track.next];
  if (record->request != request) return nullptr;
  ++track.next;
  return record;
}

DriverResult ReplayDriverHost::Close(Track& track) {
  // What was recorded after the last call that came stays counted as never made.
  if (!track.AtEnd() && track.records.back()->request.kind == Kind::Close) {
    track.records.pop_back();
    ++summary_.matched;
  }
  return DriverResult::Done(0);
}

DriverResult ReplayDriverHost::Refuse(Track& track, const SessionRequest& request) {
  const bool atEnd = track.AtEnd() || track.records[track.next]->request.kind == Kind::Close;
  if (!atEnd) {
    const SessionRequest& expected = track.records[track.next]->request;
    NoteDifference(track, Comparison(expected, request));
    // A changed call takes the place of the recorded one; any other is one too many.
    if (expected.kind == request.kind) ++track.next;
    return DriverResult::Failed(DriverError::GeneralFailure);
  }
  runOut_ = true;
  if (tail_ == Tail::Exact || !IsRepetition(track, request))
    NoteDifference(track, "expected nothing more, the library made " + WithBytes(request));
  const bool opens = request.kind == Kind::Open || request.kind == Kind::Interface;
  return DriverResult::Failed(opens ? DriverError::FileNotFound : DriverError::NotConnected);
}

void ReplayDriverHost::NoteDifference(const Track& track, const std::string& text) {
  ++summary_.different;
  if (summary_.differences.size() < kToldDifferences)
    summary_.differences.push_back("call " + std::to_string(track.next + 1) + " of " + track.name + ": " +
                                   text);
}

bool ReplayDriverHost::IsRepetition(const Track& track, const SessionRequest& request) const {
  if (request.kind == Kind::Close) return true;
  const auto seen = seen_.find(track.path);
  return seen != seen_.end() && seen->second.contains(Anywhere(request));
}

std::uint64_t ReplayDriverHost::NeverMade(const Track& track) const {
  return static_cast<std::uint64_t>(
      std::count_if(track.records.begin() + static_cast<std::ptrdiff_t>(track.next), track.records.end(),
                    [&](const SessionRecord* record) {
                      return tail_ == Tail::Exact || !IsRepetition(track, record->request);
                    }));
}

ReplayDriverHost::Summary ReplayDriverHost::Summarize() const {
  const std::lock_guard lock(mutex_);
  Summary summary = summary_;
  for (const auto& [key, track] : opens_) summary.neverMade += NeverMade(track);
  for (const auto& [key, track] : lookups_) summary.neverMade += NeverMade(track);
  for (const auto& [key, track] : handles_) summary.neverMade += NeverMade(track);
  return summary;
}

bool ReplayDriverHost::HasRunOut() const {
  const std::lock_guard lock(mutex_);
  return runOut_;
}

std::uint64_t ReplayDriverHost::Milliseconds() {
  const std::lock_guard lock(mutex_);
  // Past the last look it goes on, so that whoever waits for a moment does not wait for ever.
  const std::size_t past = nextLook_ < session_.clock.size() ? 0 : nextLook_ - session_.clock.size() + 1;
  const std::uint64_t last = session_.clock.empty() ? 0 : session_.clock.back();
  const std::uint64_t now = past == 0 ? session_.clock[nextLook_] : last + past;
  ++nextLook_;
  return now;
}

}  // namespace zel
