#pragma once

#include <functional>
#include <mutex>
#include <string>

#include "platform/InterceptingDriverHost.h"

namespace zel {

class JsonMembers;

/// Passes everything on to another host and tells of every driver call and register access in one line of
/// JSON, without the line end:
///
///     {"step":"open","call":"control","code":"0x222051","in":"00000000","out":"0600...","in_size":4,
///      "out_size":64,"ok":true,"bytes":64}
///
/// `call` is a `DriverCallName`; open and interface have `path`, control and begin `code`, seek `position`,
/// wait `milliseconds`, failed calls `error`. `in` and `out` are the first 128 bytes in hexadecimal digits,
/// `in` as before the call and `out` as after it; what an overlapped transfer brought stands in the line of
/// its finish. A register access is
///
///     {"step":"open","register":9,"value":100,"access":"write"}
///
/// A line is made before its call returns to the caller: the calls of one thread appear in their order, those
/// of several threads in the order in which they ended.
class TracingDriverHost : public InterceptingDriverHost {
 public:
  using Sink = std::function<void(const std::string& line)>;

  /// `inner` must outlive this host, and this host every handle opened through it. The sink is called by one
  /// thread at a time and must not call back.
  TracingDriverHost(DriverHost& inner, Sink sink);

  /// What the user of the camera is doing; stands in all lines from now on. UTF-8. Any thread.
  void SetStep(const std::string& step);

  void NoteRegister(RegisterAccess access, std::uint32_t address, std::uint32_t value) override;

 protected:
  DriverResult Intercept(DriverCall& call, const Forward& forward) override;

 private:
  void WriteLine(const JsonMembers& members);

  std::mutex mutex_;
  std::string step_;
  const Sink sink_;
};

}  // namespace zel
