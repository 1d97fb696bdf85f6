#include "models/FinalDevice.h"
#include "models/usb3t2/Fx3Map16.h"

namespace zel {

/// 3096 x 2080 sensor with 16-bit registers, behind the FX3 controller.
class CZELModel98 : public AutoExposedModel<CZELModel98> {
 public:
  static constexpr LONG kType = 98;

  class CPropertyImpl : public map16::Fx3Sensor {
   public:
    CPropertyImpl() : Fx3Sensor(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel98() {
  return NewDevice<CZELModel98>();
}

}  // namespace zel
