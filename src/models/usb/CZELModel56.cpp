#include "models/usb/UsbCcd.h"

namespace zel {

/// 1280 x 950 CCD behind the USB 2.0 controller.
class CZELModel56 : public UsbCcd<CZELModel56> {
 public:
  static constexpr LONG kType = 56;

  class CPropertyImpl : public SplitCcdProperty {
   public:
    CPropertyImpl() : SplitCcdProperty(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel56() {
  return NewDevice<CZELModel56>();
}

}  // namespace zel
