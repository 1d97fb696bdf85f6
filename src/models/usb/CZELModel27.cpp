#include "models/usb/UsbCcd.h"

namespace zel {
namespace {

constexpr ccd::SettingRegister kShutterIn = {Documented(0x0D)};
constexpr ccd::SettingRegister kGainIn = {Documented(0x02)};

}  // namespace

/// 2288 x 1700 CCD with 16-bit registers behind the USB 2.0 controller.
class CZELModel27 : public UsbCcd<CZELModel27> {
 public:
  static constexpr LONG kType = 27;

  class CPropertyImpl : public ccd::PlainMap<UsbProperty, kShutterIn, kGainIn> {
   public:
    CPropertyImpl() : PlainMap(kType) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel27() {
  return NewDevice<CZELModel27>();
}

}  // namespace zel
