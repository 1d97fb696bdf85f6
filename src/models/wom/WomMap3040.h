#pragma once

#include "models/Map3040.h"
#include "models/WideRegisters.h"
#include "models/wom/WomModel.h"

namespace zel::map3040 {

/// A sensor with this map behind the WOM controller and FPGA.
class WomSensor : public Property<WideRegisters<WomProperty>> {
 protected:
  explicit WomSensor(LONG type, const Traits& traits = {}) : Property(type, traits) {
    OfferSwitches({kHorMirror, kVerMirror});
  }
};

}  // namespace zel::map3040
