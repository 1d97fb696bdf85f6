#include "models/FinalDevice.h"
#include "models/WideVga.h"
#include "models/wom/WomModel.h"

namespace zel {
namespace {

/// What makes the sensor wait for its trigger input: the exposure's start, the operating mode, the input.
constexpr RegisterBit kTriggerBits[] = {{Documented(0x20), Chosen(0x0004)},
                                        {Documented(0x07), Chosen(0x0010)},
                                        {Documented(0x47), Chosen(0x0001)}};

}  // namespace

/// 752 x 480 sensor with 16-bit registers, behind the WOM controller and FPGA.
class CZELModel63 : public WomModel<CZELModel63> {
 public:
  static constexpr LONG kType = 63;

  class CPropertyImpl : public wide_vga::Property<WomProperty> {
   public:
    CPropertyImpl() : Property(kType) { OfferSwitches({kHorMirror, kVerMirror, kExtTrigger}); }

    HRESULT SetExtTrigger(LONG on) override {
      for (const auto& [address, bit] : kTriggerBits) {
        if (FAILED(SwitchSetting(kExtTrigger, address, bit, on))) return E_FAIL;
      }
      return WomProperty::SetExtTrigger(on);
    }
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel63() {
  return NewDevice<CZELModel63>();
}

}  // namespace zel
