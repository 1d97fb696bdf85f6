#pragma once

#include <cstddef>
#include <cstring>

#include "models/usb/UsbModel.h"

namespace zel {

/// A USB 2.0 camera whose low windows are shown whole: their transfer ends before the picture does, and each
/// row that it does not bring repeats the one two rows above, which has the same colours.
template <class Model>
class CompletedRows : public UsbModel<Model> {
 public:
  void OnFrameHook(unsigned char* raw) override {
    const auto width = static_cast<std::size_t>(this->frame_.roiWidth);
    const auto rows = static_cast<std::size_t>(this->frame_.roiHeight);
    if (width == 0) return;
    const std::size_t rowBytes = width * (this->IsEightBitTransfer() ? 1 : 2);
    for (std::size_t row = static_cast<std::size_t>(this->frame_.expectedBytes) / width; row < rows; ++row) {
      if (row > 0) std::memcpy(raw + row * rowBytes, raw + (row > 1 ? row - 2 : 0) * rowBytes, rowBytes);
    }
  }
};

}  // namespace zel
