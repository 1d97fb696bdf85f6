#pragma once

#include "models/Map16.h"
#include "models/wom/WomModel.h"

namespace zel::map16 {

/// A sensor with this map behind the WOM controller and FPGA.
class WomSensor : public Property<WomProperty> {
 public:
  bool ProgramWindow(const CaptureWindow& window) {
    ReadModes modes;
    if (!GetReadModes(&modes)) return false;
    modes = {modes.mode1 & kCaptureMask, modes.mode2 & kCaptureMask};
    modes = SubSampled(modes, Record(kSubSampleX).current);
    return SetWindow(window) && SetReadModes(modes);
  }

 protected:
  explicit WomSensor(LONG type, const Traits& traits = {}) : Property(type, traits) {
    OfferSwitches({kHorMirror, kVerMirror, kExtTrigger});
  }

 private:
  static constexpr LONG kCaptureMask = 0xFFF8;  // bits 0 to 2 of both read modes are cleared for capture
};

}  // namespace zel::map16
