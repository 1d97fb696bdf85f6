#include "models/FieldReadout.h"
#include "models/FinalDevice.h"
#include "models/usb3/DiskCcd.h"

namespace zel {

/// 4896 x 3264 CCD with two fields behind a USB 3.0 disk.
class CZELModel58 : public FieldReadout<DiskModel<CZELModel58>> {
 public:
  static constexpr LONG kType = 58;

  class CProperty : public DiskCcdProperty {
   public:
    CProperty() : DiskCcdProperty(kType) {}
  };

  CProperty property_;
};

CZELDevice* CreateModel58() {
  return NewDevice<CZELModel58>();
}

}  // namespace zel
