#pragma once

#include <mutex>

#include "api/ComPtr.h"
#include "api/ZELCam.h"
#include "device/CZELObserver.h"
#include "platform/Mutex.h"

namespace zel {

/// One counted reference to an application's sink. Any thread; the sink is never called or released under the
/// lock.
template <class Sink>
class SinkSlot {
 public:
  void Set(Sink* sink) { Replace(ComPtr<Sink>(sink)); }
  void Clear() { Replace({}); }
  bool IsSet() const {
    const std::lock_guard guard(mutex_);
    return static_cast<bool>(sink_);
  }
  /// With a reference of its own: stays callable when the slot is changed meanwhile.
  ComPtr<Sink> Get() const {
    const std::lock_guard guard(mutex_);
    return ComPtr<Sink>(sink_.Get());
  }
  /// Forgets the sink without releasing it.
  void Abandon() {
    const std::lock_guard guard(mutex_);
    sink_.Detach();
  }

 private:
  void Replace(ComPtr<Sink> sink) {
    const std::lock_guard guard(mutex_);
    std::swap(sink_, sink);
    // `sink`, now the old one, is a parameter: it is released after the guard.
  }

  mutable Mutex mutex_;
  ComPtr<Sink> sink_;
};

/// Passes the events of one device on to the application's two sinks.
class CZELCameraObserver final : public CZELObserver {
 public:
  CZELCameraObserver() = default;
  ~CZELCameraObserver() override;

  void Notify(LONG event, void* param, CZELDevice* device) override;

  SinkSlot<IZELGrabberCBNet>& Slot(IZELGrabberCBNet*) { return netSink_; }
  SinkSlot<IZELGrabberCB>& Slot(IZELGrabberCB*) { return sink_; }

  /// Whether this thread is inside a sink's event just now, of any camera.
  static bool IsNotifying();

 private:
  SinkSlot<IZELGrabberCBNet> netSink_;
  SinkSlot<IZELGrabberCB> sink_;
};

}  // namespace zel
