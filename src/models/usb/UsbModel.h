#pragma once

#include <algorithm>
#include <cstdint>

#include "common/BytePacking.h"
#include "models/ModelProperty.h"
#include "models/usb/UsbProperty.h"
#include "transport/usb/CZELDeviceImplUSB.h"

namespace zel {

/// What the read-out of a USB 2.0 model takes besides the pixels, in pixel clocks.
struct UsbTiming {
  LONG lineBlanking = 0;
  LONG shortestLine = 0;
  LONG frameExtra = 0;
  bool sendsBlanking = false;  ///< the transfer is as long as the lines with their blanking
};

/// Capture preparation of a USB 2.0 model: sensor window, frame arithmetic, transfer. A model has a
/// `property_` with `WantedWindow` and `ProgramWindow`, and a `kTiming`.
template <class Model>
class UsbModel : public CZELDeviceImplUSB {
 public:
  LONG PrepareCapture() override { return PrepareSensor() ? CZELDeviceImplUSB::PrepareCapture() : 0; }

  LONG ReadFrame(unsigned char* buffer) override {
    return ReadTransfer(buffer, frame_.expectedBytes, ReadKind());
  }

 protected:
  UsbModel() { frame_.useAltRead = true; }

  /// Everything before the transfer's own preparation. False also for a window whose frame can't be read.
  bool PrepareSensor() {
    // After a failure nothing may be read into buffers that were never made.
    frame_ = {.useAltRead = frame_.useAltRead};
    geometry_ = {};
    auto& property = static_cast<Model*>(this)->property_;
    const auto window = property.WantedWindow();
    if (!window || TransferBytes(*window) <= 0 || !property.ProgramWindow(*window)) return false;
    LayOut(*window);
    return true;
  }

 private:
  static constexpr std::int64_t kTransferUnit = 1024;

  static std::int64_t LineClocks(LONG width) {
    return std::max<std::int64_t>(std::int64_t{width} + Model::kTiming.lineBlanking,
                                  Model::kTiming.shortestLine);
  }

  /// At a byte per sample; not above 0 where there is no frame to read.
  static std::int64_t TransferBytes(const CaptureWindow& window) {
    if (!Model::kTiming.sendsBlanking) return std::int64_t{window.width} * window.height;
    return (LineClocks(window.width) - 2) * (window.height - 2) + Model::kTiming.frameExtra;
  }

  /// The controller packs the picture's rows at the start of the transfer.
  void LayOut(const CaptureWindow& window) {
    constexpr LONG kFrameExtra = Model::kTiming.frameExtra;
    const std::int64_t line = LineClocks(window.width);
    frame_ = {.frameClocks = static_cast<LONG>(RoundUp(line * window.height + kFrameExtra, kTransferUnit)),
              .frameExtra = kFrameExtra,
              .lineLength = static_cast<LONG>(line),
              .roiWidth = window.width,
              .roiHeight = window.height,
              .expectedBytes = static_cast<LONG>(RoundUp(TransferBytes(window), kTransferUnit)),
              .useAltRead = frame_.useAltRead};
    geometry_ = {.transferPixels = frame_.expectedBytes,
                 .width = window.width,
                 .height = window.height,
                 .sourceWidth = window.width,
                 .sourceHeight = window.height};
  }
};

}  // namespace zel
