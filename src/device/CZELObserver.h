#pragma once

#include <cstdint>

#include "platform/ComponentTypes.h"

namespace zel {

class CZELDevice;

/// What a device tells its listener.
enum DeviceEvent : LONG {
  kEventStateChanged = 0,     ///< param 0; the new state is read with `GetStatus`
  kEventFrameProcessed = 1,   ///< param points to the output buffer, valid during the call only
  kEventRegisterRead = 2,     ///< an access that a SATA camera was asked for is done; its property object
  kEventRegisterWritten = 3,  ///< has the outcome
  kEventSecondFrameKind = 4,  ///< the same for a frame of the second kind that some cameras send
};

/// Listener of one device. State events arrive on the thread that changed the state, frame events on the
/// processing worker. Must return quickly.
class CZELObserver {
 public:
  virtual void Notify(LONG event, void* param, CZELDevice* device) = 0;
  virtual ~CZELObserver() = default;
};

}  // namespace zel
