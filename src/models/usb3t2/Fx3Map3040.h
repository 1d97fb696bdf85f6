#pragma once

#include "models/Map3040.h"
#include "models/usb3t2/Usb3T2Model.h"

namespace zel::map3040 {

/// A sensor with this map behind the FX3 controller; its clock is divided with the next capture.
class Fx3Sensor : public Property<Usb3T2Property> {
 public:
  bool ProgramWindow(const CaptureWindow& window) {
    return Property::ProgramWindow(window) &&
           SUCCEEDED(SetClockDividers(Record(zel::kHalfClock).current != 0));
  }

 protected:
  explicit Fx3Sensor(LONG type) : Property(type, {.shutter = kNativeShutter, .gainCode = FixedStageGain}) {
    OfferSwitches({kHorMirror, kVerMirror, zel::kHalfClock});
  }

 private:
  static constexpr LONG FixedStageGain(LONG gain) { return (gain & 0x7F) | 0x110; }
};

}  // namespace zel::map3040
