#include "models/usb/UsbCcd.h"

namespace zel {
namespace {

constexpr ccd::SettingRegister kShutterIn = {Documented(0x01)};
constexpr ccd::SettingRegister kGainIn = {Documented(0x00)};

}  // namespace

/// 1360 x 1024 CCD behind the USB 2.0 controller.
class CZELModel20 : public UsbCcd<CZELModel20> {
 public:
  static constexpr LONG kType = 20;

  class CPropertyImpl : public ccd::PlainMap<LongRegisters<UsbProperty>, kShutterIn, kGainIn> {
   public:
    CPropertyImpl() : PlainMap(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel20() {
  return NewDevice<CZELModel20>();
}

}  // namespace zel
