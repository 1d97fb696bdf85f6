#pragma once

#include <mutex>
#include <thread>

#include "device/CZELObserver.h"
#include "platform/Mutex.h"
#include "platform/Threads.h"

namespace zel {

/// Calls a device's observer from any thread, and guarantees that an observer is not called any more once it
/// has been replaced.
class ObserverGate {
 public:
  /// Not owned; null detaches. Waits for calls of the observer before that are in progress on other threads,
  /// pumping messages meanwhile; called from inside a notification it does not wait.
  void Set(CZELObserver* observer);
  /// False when there is no observer.
  bool Notify(LONG event, void* param, CZELDevice* device);

 private:
  /// One notification under way; lives on the notifying thread's stack.
  struct Call {
    std::thread::id thread;
    Call* next;
  };
  class CallScope;

  bool IsInside() const;

  Mutex mutex_;
  CZELObserver* observer_ = nullptr;
  Call* calls_ = nullptr;
  Event quiet_;  ///< set while no call is under way
};

}  // namespace zel
