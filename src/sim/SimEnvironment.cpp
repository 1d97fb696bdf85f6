#include "sim/SimEnvironment.h"

#include <mutex>

#include "sim/SimDriverHost.h"

namespace zel {

DriverHost* InstallSimulatedHostFromEnvironment(std::string* error) {
  static std::mutex mutex;
  // Never destroyed: handles may outlive the static objects of this library.
  static SimDriverHost* installed = nullptr;

  const std::lock_guard lock(mutex);
  error->clear();
  if (installed != nullptr) return installed;
  const auto configuration = SimConfigurationFromEnvironment(error);
  if (!configuration) return nullptr;
  installed = SimDriverHost::Create(*configuration, error).release();
  if (installed != nullptr) InstallDriverHost(installed);
  return installed;
}

}  // namespace zel
