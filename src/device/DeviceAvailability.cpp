#include "device/DeviceAvailability.h"

#include <array>
#include <atomic>

namespace zel {
namespace {

/// Null for a pair outside the table.
std::atomic<bool>* TakenFlag(LONG type, LONG index) {
  static std::array<std::array<std::atomic<bool>, kDeviceIndexes>, kDeviceTypes> taken{};
  if (type < 0 || type >= kDeviceTypes || index < 0 || index >= kDeviceIndexes) return nullptr;
  return &taken[static_cast<std::size_t>(type)][static_cast<std::size_t>(index)];
}

}  // namespace

bool IsDeviceFree(LONG type, LONG index) {
  const auto* taken = TakenFlag(type, index);
  return taken != nullptr && !taken->load();
}

bool ClaimDevice(LONG type, LONG index) {
  auto* taken = TakenFlag(type, index);
  return taken != nullptr && !taken->exchange(true);
}

void ReleaseDevice(LONG type, LONG index) {
  if (auto* taken = TakenFlag(type, index)) taken->store(false);
}

}  // namespace zel
