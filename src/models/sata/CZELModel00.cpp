#include "models/FinalDevice.h"
#include "models/sata/SataModelProperty.h"

namespace zel {

/// Frame-grabbing converter: makes a SATA camera of a source with a picture of up to 8192 x 8192. It cuts the
/// window out; gain and exposure are the source's own.
class CZELModel00 : public CZELDeviceImplSATA {
 public:
  static constexpr LONG kType = 0;

  class CPropertyImpl : public SataModelProperty {
   public:
    CPropertyImpl() : SataModelProperty(kType, kConverterVolume) {}

   protected:
    bool WriteSettings(SataRun run) override { return WriteSettingsWithWindow(run); }
  };

 protected:
  CPropertyImpl property_;
};

CZELDevice* CreateModel00() {
  return NewDevice<CZELModel00>();
}

}  // namespace zel
