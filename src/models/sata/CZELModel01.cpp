#include "models/FinalDevice.h"
#include "models/sata/SataMap16.h"

namespace zel {

/// 2048 x 1536 sensor with 16-bit registers, behind SATA.
class CZELModel01 : public CZELDeviceImplSATA {
 public:
  static constexpr LONG kType = 1;

  class CPropertyImpl : public SataMap16Property {
   public:
    CPropertyImpl() : SataMap16Property(kType) { OfferSwitch(kStrobe); }

   protected:
    static constexpr LONG kStrobeBit = Documented(0x0200);  // of the first read mode

    LONG ApplyPostPrepare() override { return ApplyTriggerBit(map16::kReadMode1, map16::kTriggerBit); }

    LONG ApplyStrobe() override {
      LONG mode = 0;
      const bool known = Read(map16::kReadMode1, &mode);
      Settle();
      if (known) Write(map16::kReadMode1, WithBits(mode, kStrobeBit, IsOn(kStrobe)));
      Settle();
      Read(map16::kReadMode1, &mode);
      return 1;
    }
  };

 protected:
  CPropertyImpl property_;
};

CZELDevice* CreateModel01() {
  return NewDevice<CZELModel01>();
}

}  // namespace zel
