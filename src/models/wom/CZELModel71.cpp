#include "models/FinalDevice.h"
#include "models/wom/WomMap3040.h"

namespace zel {

/// 3856 x 2764 sensor with 16-bit registers at 16-bit addresses, behind the WOM controller and FPGA. It
/// divides its clock itself.
class CZELModel71 : public WomModel<CZELModel71> {
 public:
  static constexpr LONG kType = 71;

  class CPropertyImpl : public map3040::OwnHalfClock<map3040::WomSensor> {
   public:
    CPropertyImpl()
        : OwnHalfClock(kType, map3040::Traits{.shutter = map3040::kNativeShutter,
                                              .gainCode = [](LONG gain) { return gain | 0x1080; }}) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel71() {
  return NewDevice<CZELModel71>();
}

}  // namespace zel
