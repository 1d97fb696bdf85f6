#include "models/FinalDevice.h"
#include "models/usb/UsbMap3040.h"

namespace zel {

/// 3856 x 2764 sensor with 16-bit registers at 16-bit addresses, behind the USB 2.0 controller.
class CZELModel70 : public UsbModel<CZELModel70> {
 public:
  static constexpr LONG kType = 70;
  static constexpr UsbTiming kTiming = map3040::kUsbTiming;

  class CPropertyImpl : public map3040::PulseTriggeredUsbSensor {
   public:
    CPropertyImpl()
        : PulseTriggeredUsbSensor(kType, {.shutter = map3040::kNativeShutter,
                                          .shutterMask = 0xFFFF,
                                          .gainCode = [](LONG gain) { return gain | 0x1080; }}) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel70() {
  return NewDevice<CZELModel70>();
}

}  // namespace zel
