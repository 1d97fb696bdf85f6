#include "models/usb/TimingProgramCcd.h"

namespace zel {

/// 1280 x 950 CCD with a timing program behind the USB 2.0 controller.
class CZELModel40 : public UsbCcd<CZELModel40> {
 public:
  static constexpr LONG kType = 40;

  class CPropertyImpl : public TimingProgramCcdProperty {
   public:
    CPropertyImpl() : TimingProgramCcdProperty(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel40() {
  return NewDevice<CZELModel40>();
}

}  // namespace zel
