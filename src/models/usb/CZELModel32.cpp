#include "models/FinalDevice.h"
#include "models/usb/UsbMap3040.h"

namespace zel {
namespace {

// Pixel clocks of a line; the long one halves the rate for hosts that can't keep up with large frames.
constexpr LONG kLineLength = Chosen(0x0342);
constexpr LONG kUsualLine = 3888;
constexpr LONG kLongLine = 7776;

}  // namespace

/// 3488 x 2616 sensor with 16-bit registers at 16-bit addresses, behind the USB 2.0 controller. Shutters of
/// up to 20 bits; its first output can fire a flash.
class CZELModel32 : public UsbModel<CZELModel32> {
 public:
  static constexpr LONG kType = 32;
  static constexpr UsbTiming kTiming = map3040::kUsbTiming;

  class CPropertyImpl : public map3040::StrobedUsbSensor {
   public:
    CPropertyImpl()
        : StrobePort(kType, {.leastLines = 1,
                             .gainMask = 0x7FFF,
                             .gainCode = map3040::ExponentGain,
                             .trigger = {Documented(0x3160), Chosen(0x0001)}}) {
      OfferSwitches({kHorMirror, kVerMirror});
    }

    HRESULT SetLargeFrameOption(LONG option) override {
      if (FAILED(SetRegister(kLineLength, option != 0 ? kLongLine : kUsualLine))) return E_FAIL;
      return CZELDevicePropertyImpl::SetLargeFrameOption(option);
    }
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel32() {
  return NewDevice<CZELModel32>();
}

}  // namespace zel
