#include "models/FinalDevice.h"
#include "models/usb/PagedMap16.h"

namespace zel {

/// 1668 x 1248 sensor with 16-bit registers, behind the USB 2.0 controller. It processes colours itself.
class CZELModel15 : public UsbModel<CZELModel15> {
 public:
  static constexpr LONG kType = 15;
  static constexpr UsbTiming kTiming = map16::kUsbTiming;

  class CPropertyImpl : public map16::PagedSensor {
   public:
    CPropertyImpl() : PagedSensor(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel15() {
  return NewDevice<CZELModel15>();
}

}  // namespace zel
