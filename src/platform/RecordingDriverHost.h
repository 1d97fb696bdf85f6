#pragma once

#include <filesystem>
#include <string>

#include "platform/InterceptingDriverHost.h"
#include "platform/SessionFile.h"

namespace zel {

/// Passes everything on to another host and writes every driver call, with all that was sent and received, to
/// a session file that `ReplayDriverHost` plays back. When the file can't be written any more the session
/// goes on without it. Any thread.
class RecordingDriverHost : public InterceptingDriverHost {
 public:
  /// `inner` must outlive this host, and this host every handle opened through it.
  RecordingDriverHost(DriverHost& inner, const std::filesystem::path& path)
      : InterceptingDriverHost(inner), writer_(path) {}

  /// Ends the recording, which has its name from now on; without it no file remains. The description says
  /// what the session was, for whoever replays it. False when the file could not be written: see `Error`.
  bool Finish(const std::string& description) { return writer_.Finish(description); }
  /// Why the file can't be written, or empty.
  std::string Error() const { return writer_.Error(); }

  std::uint64_t Milliseconds() override;

 protected:
  DriverResult Intercept(DriverCall& call, const Forward& forward) override;

 private:
  SessionWriter writer_;
};

}  // namespace zel
