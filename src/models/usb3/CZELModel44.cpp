#include "models/FinalDevice.h"
#include "models/usb3/DiskMap3040.h"

namespace zel {

/// 3488 x 2616 sensor with 16-bit registers at 16-bit addresses, behind a USB 3.0 disk. Shutters of up to 20
/// bits.
class CZELModel44 : public DiskModel<CZELModel44> {
 public:
  static constexpr LONG kType = 44;

  class CProperty : public map3040::DiskSensor {
   public:
    CProperty()
        : Property(kType, {.leastLines = 1,
                           .gainCode = map3040::ExponentGain,
                           .trigger = {Documented(0x3160), Chosen(0x0001)}}) {
      OfferSwitches({kHorMirror, kVerMirror});
    }
  };

  CProperty property_;
};

CZELDevice* CreateModel44() {
  return NewDevice<CZELModel44>();
}

}  // namespace zel
