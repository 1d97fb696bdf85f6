#include "models/FinalDevice.h"
#include "models/usb3/DiskCcd.h"

namespace zel {

/// 1600 x 1200 CCD behind a USB 3.0 disk.
class CZELModel53 : public DiskModel<CZELModel53> {
 public:
  static constexpr LONG kType = 53;

  class CProperty : public DiskCcdProperty {
   public:
    CProperty() : DiskCcdProperty(kType) {}
  };

  CProperty property_;
};

CZELDevice* CreateModel53() {
  return NewDevice<CZELModel53>();
}

}  // namespace zel
