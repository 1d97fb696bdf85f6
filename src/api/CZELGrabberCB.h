#pragma once

#include "api/ComObject.h"

namespace zel {

/// A sink that does nothing, for applications that need some sink object.
template <class Interface, class Bits>
class EmptySink final : public ComObject<Interface> {
 public:
  HRESULT OnZELCameraEvent(LONG, Bits) override { return S_OK; }
};

using CZELGrabberCB = EmptySink<IZELGrabberCB, LONG*>;
using CZELGrabberCBNet = EmptySink<IZELGrabberCBNet, LONG**>;

}  // namespace zel
