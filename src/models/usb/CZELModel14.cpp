#include "models/FinalDevice.h"
#include "models/usb/UsbMap16.h"

namespace zel {

/// 1280 x 1024 sensor with 16-bit registers, behind the USB 2.0 controller.
class CZELModel14 : public UsbModel<CZELModel14> {
 public:
  static constexpr LONG kType = 14;
  static constexpr UsbTiming kTiming = map16::kUsbTiming;

  class CPropertyImpl : public map16::UsbSensor {
   public:
    CPropertyImpl() : UsbSensor(kType) { OfferSwitch(kAutoThresh); }
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel14() {
  return NewDevice<CZELModel14>();
}

}  // namespace zel
