#include "models/CcdField.h"
#include "models/FieldReadout.h"
#include "models/wom/WomCcd.h"

namespace zel {
namespace {

constexpr LONG kLinesLow = Documented(0xA0);
constexpr LONG kLinesHigh = Documented(0xA1);
constexpr LONG kLatch = Documented(0x90);  // of kLinesHigh: the generator takes both, for both fields
constexpr LONG kShutterMask = 0x7FFF;

}  // namespace

/// 2560 x 1920 CCD with two fields behind the WOM controller.
class CZELModel77 : public FieldReadout<WomModel<CZELModel77>> {
 public:
  static constexpr LONG kType = 77;

  class CPropertyImpl : public ccdfield::Property<ByteRegisters<WomProperty>> {
   public:
    CPropertyImpl() : Property(kType) {}

    HRESULT SetShutter(LONG lines) override {
      return Adjust(kShutter, lines, kShutterMask, [this](LONG value) {
        const HRESULT result = SetRegister(kLinesLow, value & 0xFF);
        return FAILED(result) ? result : SetRegister(kLinesHigh, value >> 8 | kLatch);
      });
    }
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel77() {
  return NewDevice<CZELModel77>();
}

}  // namespace zel
