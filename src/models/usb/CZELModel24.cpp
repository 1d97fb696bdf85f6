#include "models/FinalDevice.h"
#include "models/usb/UsbMap16.h"

namespace zel {

/// 1600 x 1200 sensor with 16-bit registers, behind the USB 2.0 controller. Its first output can fire a
/// flash.
class CZELModel24 : public UsbModel<CZELModel24> {
 public:
  static constexpr LONG kType = 24;
  static constexpr UsbTiming kTiming = map16::kUsbTiming;

  class CPropertyImpl : public map16::StrobedUsbSensor {
   public:
    CPropertyImpl() : StrobePort(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel24() {
  return NewDevice<CZELModel24>();
}

}  // namespace zel
