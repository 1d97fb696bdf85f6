#include "models/FieldReadout.h"
#include "models/FinalDevice.h"
#include "models/usb3/DiskCcd.h"

namespace zel {

/// 659 x 494 CCD with two fields behind a USB 3.0 disk.
class CZELModel55 : public FieldReadout<DiskModel<CZELModel55>> {
 public:
  static constexpr LONG kType = 55;

  class CProperty : public DiskCcdProperty {
   public:
    CProperty() : DiskCcdProperty(kType) {}

    /// Preparing a capture takes this camera's timing generator back to its whole frame.
    HRESULT ApplyColorMatrix() override {
      const HRESULT result = DiskCcdProperty::ApplyColorMatrix();
      if (result != S_OK) return result;
      const auto window = WantedWindow();
      return window && ProgramWindow(*window) ? S_OK : E_FAIL;
    }
  };

  CProperty property_;
};

CZELDevice* CreateModel55() {
  return NewDevice<CZELModel55>();
}

}  // namespace zel
