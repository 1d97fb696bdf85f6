#include "models/FinalDevice.h"
#include "models/usb/CompletedRows.h"
#include "models/usb/UsbMap16.h"

namespace zel {

/// 1440 x 1080 sensor with 16-bit registers, behind the USB 2.0 controller. The sensor divides its clock
/// itself.
class CZELModel34 : public CompletedRows<CZELModel34> {
 public:
  static constexpr LONG kType = 34;
  static constexpr UsbTiming kTiming = map16::kUsbTiming;

  class CPropertyImpl : public map16::StrobedUsbSensor {
   public:
    CPropertyImpl() : StrobePort(kType) {
      OfferSwitch(kAutoThresh);
      Edit(kExtTrigger).supported = 0;
    }

    HRESULT SetHalfClock(LONG on) override {
      if (!IsAttached()) return E_FAIL;
      const HRESULT result = SwitchSetting(kHalfClock, map16::kClockControl, map16::kHalfClockBit, on);
      return FAILED(result) ? result : CZELDevicePropertyImpl::SetHalfClock(on);
    }
    HRESULT GetHalfClock(LONG* on) override { return CZELDevicePropertyImpl::GetHalfClock(on); }

    /// Mode 0: the sensor's registers, 1: the same as bytes, 2: the controller's FPGA.
    HRESULT SetRegisterEx(LONG mode, LONG address, LONG value) override {
      switch (mode) {
        case 0:
          return SetRegister(address, value);
        case 1:
          return SetRegisterB(static_cast<unsigned char>(address), static_cast<unsigned char>(value));
        case 2:
          return SetFpgaRegister(address, value) == 1 ? S_OK : E_FAIL;
        default:
          return E_INVALIDARG;
      }
    }
    HRESULT GetRegisterEx(LONG address, LONG* value, LONG mode) override {
      switch (mode) {
        case 0:
          return GetRegister(address, value);
        case 1:
          return GetRegisterB(static_cast<unsigned char>(address), value);
        case 2:
          return GetFpgaRegister(address, value);
        default:
          return E_INVALIDARG;
      }
    }

    /// The outputs alone, in bits 0 and 1; the sensor's flash stays as it is.
    HRESULT SetIOPort(LONG value) override { return UsbProperty::SetIO(value << 2); }
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel34() {
  return NewDevice<CZELModel34>();
}

}  // namespace zel
