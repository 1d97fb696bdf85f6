#include "models/usb/UsbCcd.h"

namespace zel {

/// 1360 x 1024 CCD, timed by the FPGA, behind the USB 2.0 controller.
class CZELModel74 : public UsbCcd<CZELModel74> {
 public:
  static constexpr LONG kType = 74;

  class CPropertyImpl : public ccd::AnalogGain<FpgaTimed<ByteRegisters<UsbProperty>>> {
   public:
    CPropertyImpl() : AnalogGain(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel74() {
  return NewDevice<CZELModel74>();
}

}  // namespace zel
