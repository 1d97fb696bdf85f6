#include "models/wom/WomCcd.h"

namespace zel {
namespace {

// The second pair of shutter registers, of the lines that the generator skips.
constexpr LONG kSkippedShutterLow = Documented(0xA1);
constexpr LONG kSkippedShutterHigh = Documented(0xA2);

}  // namespace

/// 1600 x 1200 CCD behind the WOM controller.
class CZELModel72 : public WomModel<CZELModel72> {
 public:
  static constexpr LONG kType = 72;

  class CPropertyImpl : public ccd::Triggered<WomSplitCcdProperty> {
   public:
    CPropertyImpl() : Triggered(kType) {}

    HRESULT SetShutter(LONG lines) override {
      return Adjust(kShutter, lines, ccdsplit::kShutterMask, [this](LONG value) {
        return WriteParts(value, {{ccdsplit::kShutterLow, 0x3F},
                                  {ccdsplit::kShutterHigh, 0xFC0, 6},
                                  {kSkippedShutterLow, 0x3F},
                                  {kSkippedShutterHigh, 0xFC0, 6}});
      });
    }
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel72() {
  return NewDevice<CZELModel72>();
}

}  // namespace zel
