#include "models/ByteExposure.h"
#include "models/FinalDevice.h"
#include "models/usb/UsbMap3040.h"

namespace zel {

/// 1280 x 720 sensor with 16-bit addresses that takes shutter and gain in bytes, behind the USB 2.0
/// controller. It divides its clock itself.
class CZELModel87 : public UsbModel<CZELModel87> {
 public:
  static constexpr LONG kType = 87;
  static constexpr UsbTiming kTiming = map3040::kUsbTiming;

  class CPropertyImpl : public ByteExposure<map3040::OwnHalfClock<map3040::UsbSensor>> {
   public:
    CPropertyImpl() : ByteExposure(kType, map3040::Traits{.trigger = {Documented(0x301A), Chosen(0x0100)}}) {
      OfferSwitch(kVerMirror);
    }
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel87() {
  return NewDevice<CZELModel87>();
}

}  // namespace zel
