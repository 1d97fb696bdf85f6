#include "models/FinalDevice.h"
#include "models/wom/WomMap16.h"

namespace zel {

/// 2048 x 1536 sensor with 16-bit registers, behind the WOM controller and FPGA.
class CZELModel59 : public WomModel<CZELModel59> {
 public:
  static constexpr LONG kType = 59;

  class CPropertyImpl : public map16::WomSensor {
   public:
    CPropertyImpl() : WomSensor(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel59() {
  return NewDevice<CZELModel59>();
}

}  // namespace zel
