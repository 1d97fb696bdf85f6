#include "models/FinalDevice.h"
#include "models/usb/UsbMap16.h"

namespace zel {

/// 2560 x 1920 sensor with 16-bit registers, behind the USB 2.0 controller. Shutters of up to 20 bits.
class CZELModel28 : public UsbModel<CZELModel28> {
 public:
  static constexpr LONG kType = 28;
  static constexpr UsbTiming kTiming = map16::kUsbTiming;

  class CPropertyImpl : public map16::UsbSensor {
   public:
    CPropertyImpl() : UsbSensor(kType, {.shutterMask = 0xFFFFF, .gainMask = 0x7FFF}) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel28() {
  return NewDevice<CZELModel28>();
}

}  // namespace zel
