#include "models/FieldReadout.h"
#include "models/usb/UsbCcd.h"

namespace zel {
namespace {

constexpr LONG kReadoutOrder = Chosen(0x0A);
constexpr LONG kColumnsBackwards = Chosen(1);  // of kReadoutOrder
constexpr LONG kLinesBackwards = Chosen(2);

}  // namespace

/// 3320 x 2500 CCD with two fields, timed by the FPGA, behind the USB 2.0 controller. Its four outputs let it
/// be read from any corner.
class CZELModel30 : public FieldReadout<UsbCcd<CZELModel30>> {
 public:
  static constexpr LONG kType = 30;

  class CPropertyImpl : public FpgaTimed<LongRegisters<UsbProperty>> {
   public:
    CPropertyImpl() : FpgaTimed(kType) { OfferSwitches({kHorMirror, kVerMirror}); }

    HRESULT SetHorMirror(LONG on) override {
      const HRESULT result = SwitchSetting(kHorMirror, kReadoutOrder, kColumnsBackwards, on);
      return FAILED(result) ? result : FpgaTimed::SetHorMirror(on);
    }

    HRESULT SetVerMirror(LONG on) override {
      const HRESULT result = SwitchSetting(kVerMirror, kReadoutOrder, kLinesBackwards, on);
      return FAILED(result) ? result : FpgaTimed::SetVerMirror(on);
    }
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel30() {
  return NewDevice<CZELModel30>();
}

}  // namespace zel
