#pragma once

#include "models/Map16.h"
#include "models/usb/StrobePort.h"
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
};

/// The same with the sensor's flash output on the I/O port.
using StrobedUsbSensor = StrobePort<UsbSensor, kReadMode1, kStrobeBit>;

}  // namespace zel::map16
