#include "models/FinalDevice.h"
#include "models/usb/UsbWideVga.h"

namespace zel {

/// 752 x 480 sensor with 16-bit registers, behind the USB 2.0 controller.
class CZELModel38 : public UsbModel<CZELModel38> {
 public:
  static constexpr LONG kType = 38;
  static constexpr UsbTiming kTiming = wide_vga::kUsbTiming;

  class CPropertyImpl : public wide_vga::UsbSensor {
   public:
    CPropertyImpl() : Property(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel38() {
  return NewDevice<CZELModel38>();
}

}  // namespace zel
