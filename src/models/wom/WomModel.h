#pragma once

#include <cstdint>

#include "common/BytePacking.h"
#include "models/ModelProperty.h"
#include "models/wom/WomProperty.h"
#include "transport/wom/CZELDeviceImplWOM.h"

namespace zel {

/// Capture preparation of a WOM model: sensor window, frame arithmetic, transfer. A model has a `property_`
/// with `WantedWindow` and `ProgramWindow`.
template <class Model>
class WomModel : public CZELDeviceImplWOM {
 public:
  LONG PrepareCapture() override {
    // After a failure nothing may be read into buffers that were never made.
    frame_ = {};
    geometry_ = {};
    auto& property = static_cast<Model*>(this)->property_;
    const auto window = property.WantedWindow();
    if (!window || !property.ProgramWindow(*window)) return 0;
    const std::int64_t pixels = std::int64_t{window->width} * window->height;
    const auto bytes = static_cast<LONG>(RoundUp(pixels, kTransferUnit));
    frame_ = {.expectedBytes = bytes,
              .lineBytes = window->width,
              .roiWidth = window->width,
              .roiHeight = window->height};
    geometry_ = {.transferPixels = bytes,
                 .width = window->width,
                 .height = window->height,
                 .sourceWidth = window->width,
                 .sourceHeight = window->height};
    return CZELDeviceImplWOM::PrepareCapture();
  }

 private:
  static constexpr std::int64_t kTransferUnit = 2048;
};

}  // namespace zel
