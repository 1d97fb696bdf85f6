#include "api/CZELCameraObserver.h"

namespace zel {
namespace {

thread_local int notifyDepth = 0;

struct NotifyScope {
  NotifyScope() { ++notifyDepth; }
  ~NotifyScope() { --notifyDepth; }
};

}  // namespace

CZELCameraObserver::~CZELCameraObserver() {
  // The managed sink belongs to a runtime that may be shutting down on another thread when the camera goes:
  // its owner clears it, or the reference stays.
  netSink_.Abandon();
}

void CZELCameraObserver::Notify(LONG event, void* param, CZELDevice*) {
  const NotifyScope scope;
  // A sink may change either slot from inside its event; what it returns or throws does not stop a camera.
  if (const auto sink = netSink_.Get()) {
    try {
      sink->OnZELCameraEvent(event, static_cast<LONG**>(param));
    } catch (...) {
    }
  }
  if (const auto sink = sink_.Get()) {
    try {
      sink->OnZELCameraEvent(event, static_cast<LONG*>(param));
    } catch (...) {
    }
  }
}

bool CZELCameraObserver::IsNotifying() {
  return notifyDepth > 0;
}

}  // namespace zel
