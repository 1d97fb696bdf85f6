#include "models/FinalDevice.h"
#include "models/usb/AuxOutputs.h"
#include "models/usb/UsbMap16.h"

namespace zel {

/// 1280 x 1024 sensor with 16-bit registers, behind the USB 2.0 controller.
class CZELModel13 : public UsbModel<CZELModel13> {
 public:
  static constexpr LONG kType = 13;
  static constexpr UsbTiming kTiming = map16::kUsbTiming;

  class CPropertyImpl : public map16::UsbSensor {
   public:
    CPropertyImpl() : UsbSensor(kType) {
      OfferSwitches({kAutoThresh, kAuxValue3});
      settings_.inputFormat = 0;
      SetOutputFormat(5);
    }

    /// The store sees more bits of a gain than the sensor takes, and refuses those beyond the range.
    HRESULT SetDigitalGlobalGain(LONG gain) override {
      if (FAILED(SetRegister(map16::kGain, gain & SensorTraits().gainMask))) return E_FAIL;
      return CZELDevicePropertyImpl::SetDigitalGlobalGain(gain & kStoredGainMask);
    }

    HRESULT SetAuxValue3(LONG on) override {
      const HRESULT result = SetAuxLine(*this, kAuxLine3, on);
      if (SUCCEEDED(result)) Edit(kAuxValue3).current = auxOutput_ = on != 0;
      return result;
    }
    HRESULT GetAuxValue3(LONG* on) override { return GetAuxLine(*this, kAuxLine3, on); }

   private:
    static constexpr LONG kStoredGainMask = 0x3FF;

    LONG auxOutput_ = 0;  ///< last state of the output
  };

  /// Always 1 once the sensor is programmed; what the transfer lacks shows with the first frame.
  LONG PrepareCapture() override {
    if (!PrepareSensor()) return 0;
    CZELDeviceImplUSB::PrepareCapture();
    return 1;
  }

  CPropertyImpl property_;
};

CZELDevice* CreateModel13() {
  return NewDevice<CZELModel13>();
}

}  // namespace zel
