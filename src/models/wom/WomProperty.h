#pragma once

#include "models/WindowedProperty.h"
#include "transport/wom/CZELDevicePropertyImplWOM.h"

namespace zel {

/// The WOM family's property object as its models use it: the FPGA divides the sensor's clock.
class WomProperty : public WindowedProperty<CZELDevicePropertyImplWOM> {
 protected:
  WomProperty() { Edit(kHalfClock) = {.minimum = 0, .maximum = kClockSteps, .supported = 1}; }

 private:
  static constexpr LONG kClockSteps = 5;
};

}  // namespace zel
