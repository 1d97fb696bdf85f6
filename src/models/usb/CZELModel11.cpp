#include "models/usb/UsbCcd.h"

namespace zel {

/// 640 x 480 CCD with half clock, timed by the FPGA, behind the USB 2.0 controller.
class CZELModel11 : public UsbCcd<CZELModel11> {
 public:
  static constexpr LONG kType = 11;

  class CPropertyImpl : public ccd::HalfClock<ccd::Triggered<FpgaTimed<ByteRegisters<UsbProperty>>>> {
   public:
    CPropertyImpl() : HalfClock(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel11() {
  return NewDevice<CZELModel11>();
}

}  // namespace zel
