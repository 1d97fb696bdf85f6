#pragma once

#include <memory>
#include <mutex>
#include <utility>

#include "device/CZELDevice.h"
#include "platform/Mutex.h"

namespace zel {

/// The thread between a camera object, its property facades and the one device behind them. The camera cuts
/// it at its end; a call that is under way keeps the device until it returns. Any thread.
class DeviceLink {
 public:
  void Attach(std::shared_ptr<CZELDevice> device) {
    const std::lock_guard guard(mutex_);
    device_ = std::move(device);
  }
  /// Null without a device and after `Cut`.
  std::shared_ptr<CZELDevice> Device() const {
    const std::lock_guard guard(mutex_);
    return device_;
  }
  std::shared_ptr<CZELDevice> Cut() {
    const std::lock_guard guard(mutex_);
    return std::exchange(device_, nullptr);
  }

 private:
  mutable Mutex mutex_;
  std::shared_ptr<CZELDevice> device_;
};

}  // namespace zel
