#include "models/usb/UsbCcd.h"

namespace zel {

/// 1360 x 1024 CCD, timed by the FPGA, behind the USB 2.0 controller.
class CZELModel23 : public UsbCcd<CZELModel23> {
 public:
  static constexpr LONG kType = 23;

  class CPropertyImpl : public ccd::Triggered<ccd::AnalogGain<FpgaTimed<ByteRegisters<UsbProperty>>>> {
   public:
    CPropertyImpl() : Triggered(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel23() {
  return NewDevice<CZELModel23>();
}

}  // namespace zel
