#pragma once

#include <compare>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "platform/Files.h"
#include "platform/InterceptingDriverHost.h"

/// A session with a camera in a file: every driver call with its data. All numbers are little-endian.
///
///     "ZELSESS" 1Ah, u32 version = 1, then records, each
///     u32 bytes of the rest, u8 kind (a `DriverCall::Kind`; 11 a look at the clock; 12 the description,
///     which is the last record), u8 1 when the call worked, u16 0, u32 handle, u32 transfer, u32 code, u64
///     position, u32 bytes moved, u32 error, u64 microseconds, u32 size of in, u32 size of out, then four
///     times u32 n and n bytes: path in UTF-8, in, data, received
///
/// `code` and `position` of an open are its access and its share mode with the flags in the upper half; the
/// position of a look at the clock is what it showed.
namespace zel {

/// What the library asked of the driver: two requests are the same when all of this is.
struct SessionRequest {
  DriverCall::Kind kind = DriverCall::Kind::Open;
  std::uint32_t transfer = 0, code = 0;
  std::uint64_t position = 0;
  std::uint32_t inSize = 0, outSize = 0;
  std::string path;              ///< of an open
  std::vector<std::uint8_t> in;  ///< interface class of a lookup; without what an earlier transfer left there
  std::vector<std::uint8_t>
      data;  ///< what a control that uses its area both ways found there, if it is small

  /// To be made before the call, which may overwrite what it sends.
  static SessionRequest Of(const DriverCall& call);

  auto operator<=>(const SessionRequest&) const = default;
};

struct SessionRecord {
  SessionRequest request;
  std::uint32_t handle = 0;  ///< counts opens from 1
  DriverResult result;
  std::uint64_t microseconds = 0;  ///< from the start of the session to the end of the call
  /// The area after the call, or the path that a lookup found; empty when nothing moved.
  std::span<const std::uint8_t> received;
};

/// A session that was read.
struct Session {
  std::string description;  ///< of whoever recorded it
  std::vector<SessionRecord> records;
  std::vector<std::uint64_t> clock;  ///< milliseconds, look by look
  std::vector<std::uint8_t> bytes;   ///< of the file, in which the spans lie

  Session() = default;
  Session(Session&&) = default;
  Session& operator=(Session&&) = default;
};

/// False, with what is wrong in `error`, when these are not the bytes of a whole session.
bool ParseSession(std::vector<std::uint8_t> bytes, Session* session, std::string* error);
bool ReadSession(const std::filesystem::path& path, Session* session, std::string* error);

/// Writes a session; the file has another name until it is finished, and is removed when it never is. After
/// the first error nothing is written any more. Any thread.
class SessionWriter {
 public:
  explicit SessionWriter(const std::filesystem::path& path);
  ~SessionWriter();
  SessionWriter(const SessionWriter&) = delete;
  SessionWriter& operator=(const SessionWriter&) = delete;

  void Write(SessionRecord record);
  void WriteClock(std::uint64_t milliseconds);
  /// Gives the file its name; what is written later is ignored. False when there was an error, now or before.
  bool Finish(const std::string& description);
  /// What went wrong first, or empty.
  std::string Error() const;

 private:
  std::uint64_t Microseconds() const;
  void Put(std::uint8_t kind, const SessionRecord& record);
  void Append(std::span<const std::uint8_t> bytes);
  void Fail(int systemError);

  const std::filesystem::path target_, temporary_;
  const std::uint64_t startNs_;
  mutable std::mutex mutex_;  // guards what follows
  FilePtr file_;
  std::string error_;
};

}  // namespace zel
