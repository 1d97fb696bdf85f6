#include "models/FinalDevice.h"
#include "models/usb/UsbMap16.h"

namespace zel {

/// 2048 x 1536 sensor with 16-bit registers, behind the USB 2.0 controller. Its first output can fire a
/// flash.
class CZELModel46 : public UsbModel<CZELModel46> {
 public:
  static constexpr LONG kType = 46;
  static constexpr UsbTiming kTiming = map16::kUsbTiming;

  class CPropertyImpl : public map16::StrobedUsbSensor {
   public:
    CPropertyImpl() : StrobePort(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel46() {
  return NewDevice<CZELModel46>();
}

}  // namespace zel
