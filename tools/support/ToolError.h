#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace zel::tool {

/// What the program answers to its caller.
enum ExitCode : int {
  kExitDone = 0,
  kExitFailed = 1,  ///< the camera or the system failed
  kExitUsage = 2,   ///< the command line was wrong
  kExitNoCamera = 3,
  kExitInUse = 4,  ///< in use, or no permission
  kExitTimeout = 5,
  kExitVanished = 7,  ///< the camera went away during the work; what was saved is whole
  kExitInterrupted = 130,
};

/// Ends a verb: one sentence for the user (what, the value given, the range, the camera) and the exit code.
class ToolError : public std::runtime_error {
 public:
  ToolError(ExitCode code, const std::string& text, std::string hint = {})
      : std::runtime_error(text), code_(code), hint_(std::move(hint)) {}

  ExitCode Code() const { return code_; }
  const std::string& Hint() const { return hint_; }  ///< what to do about it; may be empty

 private:
  ExitCode code_;
  std::string hint_;
};

}  // namespace zel::tool
