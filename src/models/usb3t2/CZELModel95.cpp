#include "models/usb3t2/Fx3Ccd.h"

namespace zel {

/// 2464 x 2058 CCD behind the FX3 controller.
class CZELModel95 : public Usb3T2Model<CZELModel95> {
 public:
  static constexpr LONG kType = 95;

  class CPropertyImpl : public Fx3Ccd8003Property {
   public:
    CPropertyImpl() : Fx3Ccd8003Property(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel95() {
  return NewDevice<CZELModel95>();
}

}  // namespace zel
