#include "models/FinalDevice.h"
#include "models/sata/SataMap16.h"

namespace zel {

/// 1280 x 1024 sensor with 16-bit registers and a gain of its own, behind SATA.
class CZELModel04 : public CZELDeviceImplSATA {
 public:
  static constexpr LONG kType = 4;

  class CPropertyImpl : public SataModelProperty {
   public:
    CPropertyImpl() : SataModelProperty(kType) {}

   protected:
    LONG ApplyShutter() override {
      WriteWindowAhead(kMap16Window);
      Write(map16::kShutterLines, Current(kShutter));
      return 1;
    }
  };

 protected:
  CPropertyImpl property_;
};

CZELDevice* CreateModel04() {
  return NewDevice<CZELModel04>();
}

}  // namespace zel
