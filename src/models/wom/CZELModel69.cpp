#include "models/FinalDevice.h"
#include "models/wom/WomMap3040.h"

namespace zel {

/// 3488 x 2616 sensor with 16-bit registers at 16-bit addresses, behind the WOM controller and FPGA.
class CZELModel69 : public WomModel<CZELModel69> {
 public:
  static constexpr LONG kType = 69;

  class CPropertyImpl : public map3040::WomSensor {
   public:
    CPropertyImpl() : WomSensor(kType, {.gainCode = [](LONG gain) { return gain | 0x1000; }}) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel69() {
  return NewDevice<CZELModel69>();
}

}  // namespace zel
