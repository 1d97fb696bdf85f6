#include "models/usb/SocProperty.h"

namespace zel {

/// 1600 x 1200 CMOS sensor with picture processing behind the USB 2.0 controller.
class CZELModel17 : public SocModel<CZELModel17> {
 public:
  static constexpr LONG kType = 17;

  class CPropertyImpl : public SocProperty {
   public:
    CPropertyImpl() : SocProperty(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel17() {
  return NewDevice<CZELModel17>();
}

}  // namespace zel
