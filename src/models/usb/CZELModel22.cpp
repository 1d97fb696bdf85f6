#include "models/usb/UsbCcd.h"

namespace zel {

/// 1360 x 1024 CCD behind the USB 2.0 controller.
class CZELModel22 : public UsbCcd<CZELModel22> {
 public:
  static constexpr LONG kType = 22;

  class CPropertyImpl : public SplitCcdProperty {
   public:
    CPropertyImpl() : SplitCcdProperty(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel22() {
  return NewDevice<CZELModel22>();
}

}  // namespace zel
