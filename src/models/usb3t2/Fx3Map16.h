#pragma once

#include "models/Map16.h"
#include "models/usb3t2/Usb3T2Model.h"

namespace zel::map16 {

/// A sensor with this map behind the FX3 controller, with shutters of up to 20 bits.
class Fx3Sensor : public Property<Usb3T2Property> {
 public:
  bool ProgramWindow(const CaptureWindow& window) {
    ReadModes modes;
    if (!GetReadModes(&modes)) return false;
    // From no sub-sampling on: its bits only ever add to those of the capture before.
    modes = SubSampled(SubSampled(modes, 0), Record(kSubSampleX).current);
    const LONG clock = Record(kHalfClock).current != 0 ? kHalfClockBit : 0;
    return SetReadModes(modes) && SUCCEEDED(SetRegister(kClockControl, clock)) && SetWindow(window);
  }

 protected:
  explicit Fx3Sensor(LONG type) : Property(type, {.shutterMask = 0xFFFFF}) {
    OfferSwitches({kHorMirror, kVerMirror, kExtTrigger, kHalfClock, kAuxValue3, kAuxValue4});
  }
};

}  // namespace zel::map16
