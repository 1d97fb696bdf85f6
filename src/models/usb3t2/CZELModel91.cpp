#include "models/FinalDevice.h"
#include "models/usb3t2/Fx3Map3040.h"

namespace zel {

/// 3856 x 2764 sensor with 16-bit registers at 16-bit addresses, behind the FX3 controller.
class CZELModel91 : public Usb3T2Model<CZELModel91> {
 public:
  static constexpr LONG kType = 91;

  class CPropertyImpl : public map3040::Fx3Sensor {
   public:
    CPropertyImpl() : Fx3Sensor(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel91() {
  return NewDevice<CZELModel91>();
}

}  // namespace zel
