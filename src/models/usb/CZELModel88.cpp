#include "models/FinalDevice.h"
#include "models/usb/UsbMap16.h"

namespace zel {

/// 1280 x 1024 sensor with 16-bit registers, behind the USB 2.0 controller. Gains are parts of the greatest
/// one.
class CZELModel88 : public UsbModel<CZELModel88> {
 public:
  static constexpr LONG kType = 88;
  static constexpr UsbTiming kTiming = map16::kUsbTiming;

  class CPropertyImpl : public map16::UsbSensor {
   public:
    CPropertyImpl() : UsbSensor(kType) { OfferSwitch(kAutoThresh); }

    HRESULT SetDigitalGlobalGain(LONG gain) override {
      return Adjust(kDigitalGlobalGain, gain, kGainBits, [this](LONG value) {
        const LONG code = value * kFullCode / Record(kDigitalGlobalGain).maximum;
        return SetRegister(map16::kGain, code & kFullCode);
      });
    }

    /// The sensor holds less of the gain than was set.
    HRESULT GetDigitalGlobalGain(LONG* gain) override { return UsbProperty::GetDigitalGlobalGain(gain); }

   private:
    static constexpr LONG kGainBits = 0x1FFF;
    static constexpr LONG kFullCode = 0x7F;  // what the greatest gain writes
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel88() {
  return NewDevice<CZELModel88>();
}

}  // namespace zel
