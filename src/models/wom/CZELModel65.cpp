#include "models/FinalDevice.h"
#include "models/wom/WomMap16.h"

namespace zel {

/// 2560 x 1920 sensor with 16-bit registers, behind the WOM controller and FPGA.
class CZELModel65 : public WomModel<CZELModel65> {
 public:
  static constexpr LONG kType = 65;

  class CPropertyImpl : public map16::WomSensor {
   public:
    CPropertyImpl() : WomSensor(kType, {.shutterMask = 0xFFFFF}) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel65() {
  return NewDevice<CZELModel65>();
}

}  // namespace zel
