#include "models/FinalDevice.h"
#include "models/usb3t2/Fx3Map16.h"

namespace zel {

/// 2560 x 1920 sensor with 16-bit registers, behind the FX3 controller.
class CZELModel89 : public AutoExposedModel<CZELModel89> {
 public:
  static constexpr LONG kType = 89;

  class CPropertyImpl : public map16::Fx3Sensor {
   public:
    CPropertyImpl() : Fx3Sensor(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel89() {
  return NewDevice<CZELModel89>();
}

}  // namespace zel
