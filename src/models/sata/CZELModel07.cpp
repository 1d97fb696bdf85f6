#include "models/FinalDevice.h"
#include "models/sata/SataMap16.h"

namespace zel {

/// 1600 x 1200 sensor with 16-bit registers, behind SATA. The sensor sends its whole picture; the controller
/// cuts the window out of it. Gain and shutter have the family's ranges.
class CZELModel07 : public CZELDeviceImplSATA {
 public:
  static constexpr LONG kType = 7;

  class CPropertyImpl : public SataModelProperty {
   public:
    CPropertyImpl() : SataModelProperty(kType) {}

   protected:
    bool WriteSettings(SataRun run) override { return WriteSettingsWithWindow(run); }

    LONG ApplyPostPrepare() override { return ApplyTriggerBit(map16::kReadMode1, map16::kTriggerBit); }

    LONG ApplyGain() override {
      Write(map16::kGain, Current(kDigitalGlobalGain));
      return 1;
    }

    LONG ApplyShutter() override {
      Write(map16::kShutterLines, Current(kShutter));
      return 1;
    }
  };

 protected:
  CPropertyImpl property_;
};

CZELDevice* CreateModel07() {
  return NewDevice<CZELModel07>();
}

}  // namespace zel
