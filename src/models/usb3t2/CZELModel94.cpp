#include "models/usb3t2/Fx3Ccd.h"

namespace zel {

/// 656 x 494 CCD behind the FX3 controller.
class CZELModel94 : public Usb3T2Model<CZELModel94> {
 public:
  static constexpr LONG kType = 94;

  class CPropertyImpl : public Fx3Ccd<ccd::Map9A04<Usb3T2Property>> {
   public:
    CPropertyImpl() : Fx3Ccd(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel94() {
  return NewDevice<CZELModel94>();
}

}  // namespace zel
