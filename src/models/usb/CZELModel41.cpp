#include "models/FieldReadout.h"
#include "models/usb/UsbCcd.h"

namespace zel {
namespace {

constexpr LONG kSampleFormat = Chosen(0x0B);  // 0: the front end's upper 8 bits, 1: all of them

}  // namespace

/// 2456 x 2058 CCD with two fields behind the USB 2.0 controller.
class CZELModel41 : public FieldReadout<UsbCcd<CZELModel41>> {
 public:
  static constexpr LONG kType = 41;

  class CPropertyImpl : public WideCcdProperty {
   public:
    CPropertyImpl() : WideCcdProperty(kType) {}

    HRESULT SetTransMode(LONG mode) override {
      if (mode < 0) return E_INVALIDARG;
      if (IsAttached() && FAILED(SetRegister(kSampleFormat, mode != 0))) return E_FAIL;
      return WideCcdProperty::SetTransMode(mode);
    }
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel41() {
  return NewDevice<CZELModel41>();
}

}  // namespace zel
