#include "models/FinalDevice.h"
#include "models/usb/UsbMap3040.h"

namespace zel {

/// 3856 x 2764 sensor with 16-bit registers at 16-bit addresses, behind the USB 2.0 controller. Shutters of
/// up to 20 bits.
class CZELModel43 : public UsbModel<CZELModel43> {
 public:
  static constexpr LONG kType = 43;
  static constexpr UsbTiming kTiming = map3040::kUsbTiming;

  class CPropertyImpl : public map3040::PulseTriggeredUsbSensor {
   public:
    CPropertyImpl() : PulseTriggeredUsbSensor(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel43() {
  return NewDevice<CZELModel43>();
}

}  // namespace zel
