#pragma once

#include "models/ModelProperty.h"
#include "models/usb3/DiskProperty.h"
#include "transport/usb3/CZELDeviceImplUSB3.h"

namespace zel {

/// Capture preparation of a disk-style model: sensor window and colour phase, transfer. A model has a
/// `property_` with `WantedWindow` and `ProgramWindow`.
template <class Model>
class DiskModel : public CZELDeviceImplUSB3 {
 public:
  LONG PrepareCapture() override {
    ForgetPreparation();
    auto& property = static_cast<Model*>(this)->property_;
    const auto window = property.WantedWindow();
    if (!window || !property.ProgramWindow(*window)) return 0;
    property.SetBayerMode(property.UpdateDerivedSizes());
    return CZELDeviceImplUSB3::PrepareCapture();
  }
};

}  // namespace zel
