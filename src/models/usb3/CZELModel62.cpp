#include "models/FinalDevice.h"
#include "models/usb3/DiskCcd.h"

namespace zel {

/// 3296 x 2472 CCD behind a USB 3.0 disk.
class CZELModel62 : public DiskModel<CZELModel62> {
 public:
  static constexpr LONG kType = 62;

  class CProperty : public DiskCcdProperty {
   public:
    CProperty() : DiskCcdProperty(kType) {}
  };

  CProperty property_;
};

CZELDevice* CreateModel62() {
  return NewDevice<CZELModel62>();
}

}  // namespace zel
