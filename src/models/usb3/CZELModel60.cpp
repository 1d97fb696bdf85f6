#include "models/FinalDevice.h"
#include "models/usb3/DiskMap3040.h"

namespace zel {
namespace {

constexpr LONG kExposureStatus =
    Documented(0x3166);  // reading it ends the last exposure's hold on the shutter register

}  // namespace

/// 3856 x 2764 sensor with 16-bit registers at 16-bit addresses, behind a USB 3.0 disk.
class CZELModel60 : public map3040::SlowDiskModel<CZELModel60> {
 public:
  static constexpr LONG kType = 60;

  class CProperty : public map3040::ReadFirstDiskSensor {
   public:
    CProperty() : ReadFirstDiskSensor(kType, 0x3FFF) {}

    HRESULT SetShutter(LONG lines) override {
      const HRESULT result = GetRegister(kExposureStatus, nullptr);
      return FAILED(result) ? result : ReadFirstDiskSensor::SetShutter(lines);
    }
  };

  CProperty property_;
};

CZELDevice* CreateModel60() {
  return NewDevice<CZELModel60>();
}

}  // namespace zel
