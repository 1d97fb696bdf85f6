#include "device/CameraTrouble.h"

#include "platform/DriverHost.h"

namespace zel {

void CameraTrouble::Note(Kind kind, const std::string& words) {
  const std::lock_guard lock(mutex_);
  report_ = {kind, words};
  if (isLogged_) CurrentDriverHost().TellOnce(words);
}

void CameraTrouble::Clear() {
  const std::lock_guard lock(mutex_);
  report_ = {};
}

CameraTrouble::Report CameraTrouble::Now() const {
  const std::lock_guard lock(mutex_);
  return report_;
}

void CameraTrouble::LeaveTellingToProgram() {
  const std::lock_guard lock(mutex_);
  isLogged_ = false;
}

}  // namespace zel
