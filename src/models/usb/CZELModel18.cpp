#include "models/usb/UsbCcd.h"

namespace zel {

/// 1600 x 1200 CCD with a front end of 12 bits behind the USB 2.0 controller.
class CZELModel18 : public UsbCcd<CZELModel18> {
 public:
  static constexpr LONG kType = 18;

  class CPropertyImpl : public SplitCcdProperty12Bit {
   public:
    CPropertyImpl() : SplitCcdProperty12Bit(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel18() {
  return NewDevice<CZELModel18>();
}

}  // namespace zel
