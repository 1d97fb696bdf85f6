#pragma once

#include <cstdint>

#include "common/BytePacking.h"
#include "models/ModelProperty.h"
#include "transport/usb/CZELDeviceImplUSB.h"
#include "transport/usb/CZELDevicePropertyImplUSB.h"

namespace zel {

/// What the read-out of a USB 2.0 model takes besides the pixels, in pixel clocks.
struct UsbTiming {
  LONG lineBlanking = 0;
  LONG shortestLine = 0;
  LONG frameExtra = 0;
};

/// Capture preparation of a USB 2.0 model: sensor window, frame arithmetic, transfer. A model has a
/// `property_` with `WantedWindow` and `ProgramWindow`, and a `kTiming`.
template <class Model>
class UsbModel : public CZELDeviceImplUSB {
 public:
  LONG PrepareCapture() override {
    // After a failure nothing may be read into buffers that were never made.
    frame_ = {.useAltRead = frame_.useAltRead};
    geometry_ = {};
    auto& property = static_cast<Model*>(this)->property_;
    const auto window = property.WantedWindow();
    if (!window || !property.ProgramWindow(*window)) return 0;
    LayOut(*window);
    return CZELDeviceImplUSB::PrepareCapture();
  }

 protected:
  UsbModel() { frame_.useAltRead = true; }

 private:
  static constexpr std::int64_t kTransferUnit = 1024;

  /// The controller packs the picture's rows at the start of the transfer.
  void LayOut(const CaptureWindow& window) {
    constexpr UsbTiming kTiming = Model::kTiming;
    const LONG line = std::max(window.width + kTiming.lineBlanking, kTiming.shortestLine);
    const std::int64_t clocks = std::int64_t{line} * window.height + kTiming.frameExtra;
    const std::int64_t bytes = std::int64_t{window.width} * window.height;
    frame_ = {.frameClocks = static_cast<LONG>(RoundUp(clocks, kTransferUnit)),
              .frameExtra = kTiming.frameExtra,
              .lineLength = line,
              .roiWidth = window.width,
              .roiHeight = window.height,
              .expectedBytes = static_cast<LONG>(RoundUp(bytes, kTransferUnit)),
              .useAltRead = frame_.useAltRead};
    geometry_ = {.transferPixels = frame_.expectedBytes,
                 .width = window.width,
                 .height = window.height,
                 .sourceWidth = window.width,
                 .sourceHeight = window.height};
  }
};

}  // namespace zel
