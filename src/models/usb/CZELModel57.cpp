#include "models/usb/TimingProgramCcd.h"

namespace zel {

/// 1280 x 960 CCD with a timing program behind the USB 2.0 controller.
class CZELModel57 : public UsbCcd<CZELModel57> {
 public:
  static constexpr LONG kType = 57;

  class CPropertyImpl : public TimingProgramCcdProperty {
   public:
    CPropertyImpl() : TimingProgramCcdProperty(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel57() {
  return NewDevice<CZELModel57>();
}

}  // namespace zel
