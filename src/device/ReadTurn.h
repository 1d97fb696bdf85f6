#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "platform/Mutex.h"
#include "platform/Threads.h"

namespace zel {

/// Lets one thread at a time read frames from a device, also when a read of an earlier capture is still stuck
/// in the driver.
class ReadTurn {
 public:
  /// True when the turn came within the time; false also when `cancelled` was set (and `Wake` called).
  bool Take(const std::atomic<bool>& cancelled, std::uint32_t milliseconds = kForever) {
    std::unique_lock<std::mutex> lock(mutex_);
    const auto ready = [&] { return !taken_ || cancelled; };
    if (milliseconds == kForever) {
      changed_.wait(lock, ready);
    } else {
      changed_.wait_for(lock, std::chrono::milliseconds(milliseconds), ready);
    }
    if (taken_ || cancelled) return false;
    taken_ = true;
    return true;
  }

  void Return() {
    const std::lock_guard lock(mutex_);
    taken_ = false;
    changed_.notify_all();
  }

  /// Makes the waiting threads look at their `cancelled` again.
  void Wake() {
    const std::lock_guard lock(mutex_);
    changed_.notify_all();
  }

 private:
  Mutex mutex_;
  std::condition_variable changed_;
  bool taken_ = false;
};

}  // namespace zel
