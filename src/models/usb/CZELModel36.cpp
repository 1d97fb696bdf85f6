#include <algorithm>
#include <vector>

#include "models/FinalDevice.h"
#include "models/usb/UsbWideVga.h"

namespace zel {

/// 480 x 752: the 752 x 480 sensor on its side, behind the USB 2.0 controller. The frame arrives column by
/// column and is turned before it is processed.
class CZELModel36 : public UsbModel<CZELModel36> {
 public:
  static constexpr LONG kType = 36;
  static constexpr UsbTiming kTiming = wide_vga::kUsbTiming;

  class CPropertyImpl : public wide_vga::UsbSensor {
   public:
    CPropertyImpl() : Property(kType, wide_vga::Mounting::OnItsSide) {
      OfferSwitches({kHorMirror, kVerMirror});
    }
  };

  void OnFrameHook(unsigned char* raw) override {
    const auto width = static_cast<std::size_t>(frame_.roiWidth);
    const auto height = static_cast<std::size_t>(frame_.roiHeight);
    const std::size_t sampleBytes = IsEightBitTransfer() ? 1 : 2;
    columns_.assign(raw, raw + width * height * sampleBytes);
    for (std::size_t y = 0; y < height; ++y) {
      for (std::size_t x = 0; x < width; ++x, raw += sampleBytes)
        std::copy_n(&columns_[(x * height + y) * sampleBytes], sampleBytes, raw);
    }
  }

  CPropertyImpl property_;

 private:
  std::vector<unsigned char> columns_;  ///< the frame as it arrived
};

CZELDevice* CreateModel36() {
  return NewDevice<CZELModel36>();
}

}  // namespace zel
