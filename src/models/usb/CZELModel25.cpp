#include "models/usb/UsbCcd.h"

namespace zel {
namespace {

constexpr LONG kShutterLines = Documented(0x00);

}  // namespace

/// 1600 x 1282 CCD behind the USB 2.0 controller; the FPGA amplifies.
class CZELModel25 : public UsbCcd<CZELModel25> {
 public:
  static constexpr LONG kType = 25;

  class CPropertyImpl : public FpgaTimed<LongRegisters<UsbProperty>> {
   public:
    CPropertyImpl() : FpgaTimed(kType) {}

    HRESULT SetShutter(LONG lines) override {
      return Adjust(kShutter, lines, 0xFFFF,
                    [this](LONG value) { return SetRegister(kShutterLines, value); });
    }
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel25() {
  return NewDevice<CZELModel25>();
}

}  // namespace zel
