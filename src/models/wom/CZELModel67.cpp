#include "models/FinalDevice.h"
#include "models/wom/WomMap16.h"

namespace zel {

/// 1280 x 1024 sensor with 16-bit registers, behind the WOM controller and FPGA.
class CZELModel67 : public WomModel<CZELModel67> {
 public:
  static constexpr LONG kType = 67;

  class CPropertyImpl : public map16::WomSensor {
   public:
    CPropertyImpl() : WomSensor(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel67() {
  return NewDevice<CZELModel67>();
}

}  // namespace zel
