#include "models/usb3t2/Fx3Ccd.h"

namespace zel {

/// 1600 x 1200 CCD behind the FX3 controller.
class CZELModel92 : public Usb3T2Model<CZELModel92> {
 public:
  static constexpr LONG kType = 92;

  class CPropertyImpl : public Fx3Ccd8003Property {
   public:
    CPropertyImpl() : Fx3Ccd8003Property(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel92() {
  return NewDevice<CZELModel92>();
}

}  // namespace zel
