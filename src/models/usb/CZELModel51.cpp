#include "models/FinalDevice.h"
#include "models/usb/UsbMap3040.h"

namespace zel {

/// 4384 x 3288 sensor with 16-bit registers at 16-bit addresses, behind the USB 2.0 controller. Shutters of
/// up to 20 bits.
class CZELModel51 : public UsbModel<CZELModel51> {
 public:
  static constexpr LONG kType = 51;
  static constexpr UsbTiming kTiming = map3040::kUsbTiming;

  class CPropertyImpl : public map3040::UsbSensor {
   public:
    CPropertyImpl() : Property(kType, {.gainMask = 0x1FFF}) { OfferSwitches({kHorMirror, kVerMirror}); }
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel51() {
  return NewDevice<CZELModel51>();
}

}  // namespace zel
