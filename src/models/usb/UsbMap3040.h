#pragma once

#include "models/Map3040.h"
#include "models/WideRegisters.h"
#include "models/usb/StrobePort.h"
#include "models/usb/UsbModel.h"

namespace zel::map3040 {

/// Read-out of the USB 2.0 cameras with this map, in pixel clocks.
constexpr UsbTiming kUsbTiming{.lineBlanking = 400, .frameExtra = 40'000};

/// A sensor with this map behind the USB 2.0 controller.
using UsbSensor = Property<WideRegisters<UsbProperty>>;

/// The same with the sensor's flash output on the I/O port.
using StrobedUsbSensor = StrobePort<UsbSensor, kFlashControl, kFlashBit>;

/// The sensor starts each frame at a pulse of its input, which it has to be told first.
class PulseTriggeredUsbSensor : public StrobedUsbSensor {
 protected:
  explicit PulseTriggeredUsbSensor(LONG type, const Traits& traits = {}) : StrobePort(type, traits) {
    OfferSwitches({kHorMirror, kVerMirror, kExtTrigger});
  }

  HRESULT ProgramTrigger(bool on) override {
    if (!on) return SetRegister(kPulseControl, kFreeRunning);
    HRESULT result = SetRegister(kPulseDelay, 0);
    if (SUCCEEDED(result)) result = SetRegister(kPulseLength, kPulseLines);
    return FAILED(result) ? result : SetRegister(kPulseControl, kPulseStarts);
  }

 private:
  static constexpr LONG kPulseDelay = Documented(0x3046);
  static constexpr LONG kPulseLength = Documented(0x3048);
  static constexpr LONG kPulseControl = Documented(0x3162);
  static constexpr LONG kPulseLines = Documented(32);    // shorter pulses are noise
  static constexpr LONG kPulseStarts = Documented(159);  // bit 7 waits for the pulse
  static constexpr LONG kFreeRunning = Chosen(31);       // the same without it
};

}  // namespace zel::map3040
