#include "models/usb3t2/Fx3Ccd.h"

namespace zel {

/// 2464 x 2058 CCD behind the FX3 controller.
class CZELModel93 : public Usb3T2Model<CZELModel93> {
 public:
  static constexpr LONG kType = 93;

  class CPropertyImpl : public Fx3Ccd8003Property {
   public:
    CPropertyImpl() : Fx3Ccd8003Property(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel93() {
  return NewDevice<CZELModel93>();
}

}  // namespace zel
