#include "models/usb/UsbCcd.h"

namespace zel {

/// 1620 x 1220 CCD behind the USB 2.0 controller.
class CZELModel19 : public UsbCcd<CZELModel19> {
 public:
  static constexpr LONG kType = 19;

  class CPropertyImpl : public SplitCcdProperty {
   public:
    CPropertyImpl() : SplitCcdProperty(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel19() {
  return NewDevice<CZELModel19>();
}

}  // namespace zel
