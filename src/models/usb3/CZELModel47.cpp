#include "models/FinalDevice.h"
#include "models/usb3/DiskMap3040.h"

namespace zel {

/// 1360 x 1024 sensor with 16-bit registers at 16-bit addresses, behind a USB 3.0 disk.
class CZELModel47 : public DiskModel<CZELModel47> {
 public:
  static constexpr LONG kType = 47;

  class CProperty : public map3040::DiskSensor {
   public:
    CProperty() : Property(kType) {}
  };

  CProperty property_;
};

CZELDevice* CreateModel47() {
  return NewDevice<CZELModel47>();
}

}  // namespace zel
