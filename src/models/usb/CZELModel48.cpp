#include "models/FinalDevice.h"
#include "models/usb/CompletedRows.h"
#include "models/usb/PagedMap16.h"

namespace zel {

/// 1600 x 1200 sensor with 16-bit registers, behind the USB 2.0 controller. It processes colours itself.
class CZELModel48 : public CompletedRows<CZELModel48> {
 public:
  static constexpr LONG kType = 48;
  static constexpr UsbTiming kTiming = map16::kUsbTiming;

  class CPropertyImpl : public map16::PagedSensor {
   public:
    CPropertyImpl() : PagedSensor(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel48() {
  return NewDevice<CZELModel48>();
}

}  // namespace zel
