#pragma once

#include <cstdint>

#include "common/BytePacking.h"
#include "models/ModelProperty.h"
#include "models/usb3t2/AutoExposure.h"
#include "models/usb3t2/Usb3T2Property.h"
#include "transport/usb3t2/CZELDeviceImplUSB3T2.h"

namespace zel {

/// Capture preparation of an FX3 model: sensor window, frame arithmetic, transfer. A model has a `property_`
/// with `WantedWindow` and `ProgramWindow`.
template <class Model>
class Usb3T2Model : public CZELDeviceImplUSB3T2 {
 public:
  LONG PrepareCapture() override {
    geometry_ = {};
    SetFrame({});
    auto& property = static_cast<Model*>(this)->property_;
    const auto window = property.WantedWindow();
    if (window && property.ProgramWindow(*window)) {
      const std::int64_t bytes =
          RoundUp((window->width + kSpareColumns) * (window->height + kSpareRows) * 2, kTransferUnit);
      SetFrame({.frameBytes = static_cast<LONG>(bytes),
                .lineBytes = window->width,
                .frameWidth = window->width,
                .frameHeight = window->height});
      geometry_ = {.transferPixels = static_cast<LONG>(bytes / 2),
                   .width = window->width,
                   .height = window->height,
                   .sourceWidth = window->width,
                   .sourceHeight = window->height};
    }
    // Without sizes the family prepares nothing, and no frame can be read.
    return CZELDeviceImplUSB3T2::PrepareCapture();
  }

 private:
  // The transfer has room for dark columns and rows around the picture, in two bytes a pixel.
  static constexpr std::int64_t kSpareColumns = 128;
  static constexpr std::int64_t kSpareRows = 128;
  static constexpr std::int64_t kTransferUnit = 8192;
};

/// The same with automatic exposure and gain after every frame, by the model's `kExposureControl`.
template <class Model>
class AutoExposedModel : public Usb3T2Model<Model> {
 public:
  static constexpr ExposureControl kExposureControl{};

  LONG ReadFrame(unsigned char* buffer) override {
    const Usb3T2Frame frame = this->CopyFrame();
    if (CZELDeviceImplUSB3T2::ReadFrame(buffer) == 0) return 0;
    ControlExposure(static_cast<Model*>(this)->property_, Model::kExposureControl, this->AeTarget(),
                    {.samples = buffer,
                     .width = frame.frameWidth,
                     .height = frame.frameHeight,
                     .bytesPerSample = this->IsEightBitTransfer() ? 1 : 2});
    return 1;
  }
};

}  // namespace zel
