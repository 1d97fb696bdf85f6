#include "models/usb/UsbCcd.h"

namespace zel {

/// 659 x 494 CCD with half clock behind the USB 2.0 controller.
class CZELModel12 : public UsbCcd<CZELModel12> {
 public:
  static constexpr LONG kType = 12;

  class CPropertyImpl : public ccd::HalfClock<SplitCcdProperty> {
   public:
    CPropertyImpl() : HalfClock(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel12() {
  return NewDevice<CZELModel12>();
}

}  // namespace zel
