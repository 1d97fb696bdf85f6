#include "models/FinalDevice.h"
#include "models/usb3/DiskCcd.h"

namespace zel {

/// 2456 x 2058 CCD behind a USB 3.0 disk.
class CZELModel52 : public DiskModel<CZELModel52> {
 public:
  static constexpr LONG kType = 52;

  class CProperty : public DiskCcdProperty {
   public:
    CProperty() : DiskCcdProperty(kType) {}
  };

  CProperty property_;
};

CZELDevice* CreateModel52() {
  return NewDevice<CZELModel52>();
}

}  // namespace zel
