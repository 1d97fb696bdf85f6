#include "models/FinalDevice.h"
#include "models/sata/SataModelProperty.h"

namespace zel {
namespace {

// The front end's gain and the timing generator's shutter: 6 bits in the first register, the rest in the
// next.
constexpr LONG kGainLow = Chosen(0x06), kGainHigh = Chosen(0x07);
constexpr LONG kShutterLow = Chosen(0x9E), kShutterHigh = Chosen(0x9F);
constexpr LONG kLowBits = 6;
constexpr LONG kLowMask = (1 << kLowBits) - 1;

// Of the timing generator, behind the dummy lines and columns of the chip.
constexpr WindowRegisters kWindow{.rowStart = Chosen(0x90),
                                  .columnStart = Chosen(0x92),
                                  .rowSize = Chosen(0x94),
                                  .columnSize = Chosen(0x96),
                                  .firstRow = 10,
                                  .firstColumn = 40};

}  // namespace

/// 1360 x 1024 CCD behind SATA.
class CZELModel06 : public CZELDeviceImplSATA {
 public:
  static constexpr LONG kType = 6;

  class CPropertyImpl : public SataModelProperty {
   public:
    CPropertyImpl() : SataModelProperty(kType) {}

   protected:
    LONG ApplyGain() override { return WriteSplit(kGainLow, kGainHigh, Current(kDigitalGlobalGain)); }

    LONG ApplyShutter() override {
      WriteWindowAhead(kWindow);
      return WriteSplit(kShutterLow, kShutterHigh, Current(kShutter));
    }

   private:
    LONG WriteSplit(LONG lowAddress, LONG highAddress, LONG value) {
      WriteAndSettle(lowAddress, value & kLowMask);
      Write(highAddress, value >> kLowBits);
      return 1;
    }
  };

 protected:
  CPropertyImpl property_;
};

CZELDevice* CreateModel06() {
  return NewDevice<CZELModel06>();
}

}  // namespace zel
