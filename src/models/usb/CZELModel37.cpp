#include "models/usb/UsbCcd.h"

namespace zel {

/// 1280 x 950 CCD behind the USB 2.0 controller.
class CZELModel37 : public UsbCcd<CZELModel37> {
 public:
  static constexpr LONG kType = 37;

  class CPropertyImpl : public WideCcdProperty {
   public:
    CPropertyImpl() : WideCcdProperty(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel37() {
  return NewDevice<CZELModel37>();
}

}  // namespace zel
