#include "models/FinalDevice.h"
#include "models/usb3t2/Fx3Map3040.h"

namespace zel {

/// 4608 x 3288 sensor with 16-bit registers at 16-bit addresses, behind the FX3 controller.
class CZELModel90 : public Usb3T2Model<CZELModel90> {
 public:
  static constexpr LONG kType = 90;

  class CPropertyImpl : public map3040::Fx3Sensor {
   public:
    CPropertyImpl() : Fx3Sensor(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel90() {
  return NewDevice<CZELModel90>();
}

}  // namespace zel
