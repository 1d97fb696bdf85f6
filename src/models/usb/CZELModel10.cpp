#include "models/FinalDevice.h"
#include "models/usb/UsbWideVga.h"

namespace zel {

/// 640 x 480 of the 752 x 480 sensor, behind the USB 2.0 controller.
class CZELModel10 : public UsbModel<CZELModel10> {
 public:
  static constexpr LONG kType = 10;
  static constexpr UsbTiming kTiming = wide_vga::kUsbTiming;

  class CPropertyImpl : public wide_vga::UsbSensor {
   public:
    CPropertyImpl() : Property(kType) { OfferSwitches({kHorMirror, kVerMirror}); }
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel10() {
  return NewDevice<CZELModel10>();
}

}  // namespace zel
