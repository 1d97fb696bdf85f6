#include "models/FinalDevice.h"
#include "models/usb/UsbMap16.h"

namespace zel {

/// 2048 x 1536 sensor with 16-bit registers, behind the USB 2.0 controller. Its first output can fire a
/// flash.
class CZELModel26 : public UsbModel<CZELModel26> {
 public:
  static constexpr LONG kType = 26;
  static constexpr UsbTiming kTiming = map16::kUsbTiming;

  class CPropertyImpl : public map16::StrobedUsbSensor {
   public:
    CPropertyImpl() : StrobePort(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel26() {
  return NewDevice<CZELModel26>();
}

}  // namespace zel
