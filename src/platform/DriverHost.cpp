#include "platform/DriverHost.h"

#include <atomic>
#include <mutex>
#include <set>

#include "platform/Console.h"

namespace zel {
namespace {

std::atomic<DriverHost*> g_installed{nullptr};

}  // namespace

const char* DriverErrorText(DriverError error) {
  switch (error) {
    case DriverError::None:
      return "no error";
    case DriverError::FileNotFound:
      return "not found";
    case DriverError::AccessDenied:
      return "access denied";
    case DriverError::InvalidHandle:
      return "invalid handle";
    case DriverError::WriteProtect:
      return "write-protected";
    case DriverError::GeneralFailure:
      return "general failure";
    case DriverError::SharingViolation:
      return "in use";
    case DriverError::NotSupported:
      return "not supported";
    case DriverError::InvalidParameter:
      return "invalid parameter";
    case DriverError::Timeout:
      return "time-out";
    case DriverError::Aborted:
      return "aborted";
    case DriverError::Pending:
      return "pending";
    case DriverError::NotConnected:
      return "not connected";
  }
  return "unknown error";
}

void DriverHost::TellOnce(std::string_view line) {
  // Never destroyed: workers may outlive static objects.
  static auto& mutex = *new std::mutex;
  static auto& told = *new std::set<std::string, std::less<>>;
  const std::lock_guard lock(mutex);
  if (!line.empty() && told.emplace(line).second) WriteLogLine(std::string(line));
}

DriverHost& CurrentDriverHost() {
  DriverHost* const installed = g_installed.load(std::memory_order_acquire);
  return installed ? *installed : SystemDriverHost();
}

DriverHost* InstallDriverHost(DriverHost* host) {
  return g_installed.exchange(host, std::memory_order_acq_rel);
}

}  // namespace zel
