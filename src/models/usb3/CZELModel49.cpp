#include "models/FinalDevice.h"
#include "models/usb3/DiskMap3040.h"

namespace zel {

/// 4384 x 3288 sensor with 16-bit registers at 16-bit addresses, behind a USB 3.0 disk.
class CZELModel49 : public map3040::SlowDiskModel<CZELModel49> {
 public:
  static constexpr LONG kType = 49;

  class CProperty : public map3040::ReadFirstDiskSensor {
   public:
    CProperty() : ReadFirstDiskSensor(kType, 0x1FFF) {}
  };

  CProperty property_;
};

CZELDevice* CreateModel49() {
  return NewDevice<CZELModel49>();
}

}  // namespace zel
