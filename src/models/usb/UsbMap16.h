#pragma once

#include "models/Map16.h"
#include "models/usb/UsbModel.h"

namespace zel::map16 {

/// Read-out of the USB 2.0 cameras with this map, in pixel clocks.
constexpr UsbTiming kUsbTiming{
    .lineBlanking = 244, .shortestLine = 553, .frameExtra = 241, .sendsBlanking = true};

/// A sensor with this map behind the USB 2.0 controller.
class UsbSensor : public Property<UsbProperty> {
 public:
  HRESULT GetDigitalGlobalGain(LONG* gain) override {
    LONG value = 0;
    if (FAILED(GetRegister(SensorTraits().gainRegister, &value))) return E_FAIL;
    Edit(kDigitalGlobalGain).current = value & SensorTraits().gainMask;
    Put(gain, Record(kDigitalGlobalGain).current);
    return S_OK;
  }

  HRESULT SetAutoThresh(LONG on) override {
    const HRESULT result = SwitchSetting(kAutoThresh, kThreshControl, kAutoThreshBit, on);
    return FAILED(result) ? result : UsbProperty::SetAutoThresh(on);
  }

  HRESULT GetAutoThresh(LONG* on) override {
    if (Record(kAutoThresh).supported == 0) return UsbProperty::GetAutoThresh(on);
    return ReadSwitch(kThreshControl, kAutoThreshBit, kAutoThresh, on);
  }

  /// Outputs in bits 2 and 3.
  HRESULT SetIO(LONG value) override {
    if (SensorTraits().strobeOnPort &&
        FAILED(SwitchBits(kReadMode1, kStrobeBit, (value & kFirstOutput) != 0)))
      return E_FAIL;
    return UsbProperty::SetIO(value);
  }

  bool ProgramWindow(const CaptureWindow& window) {
    ReadModes modes;
    if (!GetReadModes(&modes)) return false;
    modes = SubSampled(modes, Record(kSubSampleX).current);
    return SetReadModes(modes) && SetWindow(window);
  }

 protected:
  explicit UsbSensor(LONG type, const Traits& traits = {}) : Property(type, traits) {
    OfferSwitches({kHorMirror, kVerMirror, kExtTrigger, kHalfClock});
  }

 private:
  static constexpr LONG kFirstOutput = 0x4;
};

}  // namespace zel::map16
