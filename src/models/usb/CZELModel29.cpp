#include "models/FieldReadout.h"
#include "models/usb/UsbCcd.h"

namespace zel {
namespace {

constexpr ccd::SettingRegister kShutterIn = {Documented(0x01), 0x7FF};
constexpr ccd::SettingRegister kGainIn = {Documented(0x00)};

}  // namespace

/// 2560 x 1920 CCD with two fields and 16-bit registers behind the USB 2.0 controller.
class CZELModel29 : public FieldReadout<UsbCcd<CZELModel29>> {
 public:
  static constexpr LONG kType = 29;

  class CPropertyImpl : public ccd::PlainMap<FpgaRegisters<UsbProperty>, kShutterIn, kGainIn> {
   public:
    CPropertyImpl() : PlainMap(kType) {}

    HRESULT SetFpgaRegister(LONG address, LONG value) override { return ProgramFpga(address, value); }
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel29() {
  return NewDevice<CZELModel29>();
}

}  // namespace zel
