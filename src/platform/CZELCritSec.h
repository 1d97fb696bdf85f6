#pragma once

#include <mutex>

#include "platform/Mutex.h"

namespace zel {

/// The lock of one camera: guards its settings, states and queue flags, and is shared by the device and its
/// image objects. Recursive, as locked setters call each other. Held through `std::lock_guard<CZELCritSec>`;
/// never across a driver call, frame processing, an observer call or a wait.
class CZELCritSec {
 public:
  CZELCritSec() = default;
  virtual ~CZELCritSec() = default;
  CZELCritSec(const CZELCritSec&) = delete;
  CZELCritSec& operator=(const CZELCritSec&) = delete;

  void lock() { mutex_.lock(); }
  void unlock() { mutex_.unlock(); }

 private:
  RecursiveMutex mutex_;
};

using CritSecGuard = std::lock_guard<CZELCritSec>;

}  // namespace zel
