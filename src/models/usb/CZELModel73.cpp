#include "models/FinalDevice.h"
#include "models/usb/UsbMap16.h"

namespace zel {

/// 1328 x 1048 sensor with 16-bit registers, behind the USB 2.0 controller.
class CZELModel73 : public UsbModel<CZELModel73> {
 public:
  static constexpr LONG kType = 73;
  static constexpr UsbTiming kTiming = map16::kUsbTiming;

  class CPropertyImpl : public map16::UsbSensor {
   public:
    CPropertyImpl() : UsbSensor(kType) { OfferSwitch(kAutoThresh); }
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel73() {
  return NewDevice<CZELModel73>();
}

}  // namespace zel
