#include "models/FinalDevice.h"
#include "models/wom/WomMap3040.h"

namespace zel {

/// 4608 x 3288 sensor with 16-bit registers at 16-bit addresses, behind the WOM controller and FPGA. It
/// divides its clock itself.
class CZELModel82 : public WomModel<CZELModel82> {
 public:
  static constexpr LONG kType = 82;

  class CPropertyImpl : public map3040::OwnHalfClock<map3040::WomSensor> {
   public:
    CPropertyImpl()
        : OwnHalfClock(kType, map3040::Traits{.shutter = map3040::kNativeShutter,
                                              .gainCode = [](LONG gain) { return (gain & 0x7F) | 0x110; }}) {}
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel82() {
  return NewDevice<CZELModel82>();
}

}  // namespace zel
