#include "models/FieldReadout.h"
#include "models/FinalDevice.h"
#include "models/usb3/DiskCcd.h"
#include "models/usb3/PatientCapture.h"

namespace zel {

/// 6644 x 4384 CCD with two fields behind a USB 3.0 disk.
class CZELModel54 : public PatientCapture<FieldReadout<DiskModel<CZELModel54>>> {
 public:
  static constexpr LONG kType = 54;

  class CProperty : public DiskCcdProperty {
   public:
    CProperty() : DiskCcdProperty(kType) {}
  };

  CProperty property_;
};

CZELDevice* CreateModel54() {
  return NewDevice<CZELModel54>();
}

}  // namespace zel
