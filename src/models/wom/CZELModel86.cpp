#include "models/FinalDevice.h"
#include "models/wom/WomMap3040.h"

namespace zel {

/// 1280 x 960 sensor with 16-bit registers at 16-bit addresses, behind the WOM controller and FPGA.
class CZELModel86 : public WomModel<CZELModel86> {
 public:
  static constexpr LONG kType = 86;

  class CPropertyImpl : public map3040::WomSensor {
   public:
    CPropertyImpl() : WomSensor(kType, {.shutter = map3040::kNativeShutter}) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel86() {
  return NewDevice<CZELModel86>();
}

}  // namespace zel
