#pragma once

#include "device/DeviceAvailability.h"

namespace zel {

/// One entry of the process's table of cameras in use, held while a camera object has its device open. An
/// object gives back only what it holds, so that it can't free another object's camera. Not thread-safe by
/// itself.
class DeviceClaim {
 public:
  DeviceClaim() = default;
  ~DeviceClaim() { Release(); }
  DeviceClaim(const DeviceClaim&) = delete;
  DeviceClaim& operator=(const DeviceClaim&) = delete;

  /// False when another object of this process holds that camera, or there is no such entry.
  bool Take(LONG type, LONG index) {
    Release();
    held_ = ClaimDevice(type, index);
    type_ = type;
    index_ = index;
    return held_;
  }

  void Release() {
    if (held_) ReleaseDevice(type_, index_);
    held_ = false;
  }

 private:
  bool held_ = false;
  LONG type_ = 0;
  LONG index_ = 0;
};

}  // namespace zel
