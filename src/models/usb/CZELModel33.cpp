#include "models/CcdField.h"
#include "models/FieldReadout.h"
#include "models/usb/UsbCcd.h"

namespace zel {
namespace {

// Lines of a field: where its exposure starts, for each of the two fields, and how long it takes.
constexpr LONG kFirstStartLow = Documented(0xA2);
constexpr LONG kFirstStartHigh = Documented(0xA3);
constexpr LONG kLinesLow = Documented(0xA4);
constexpr LONG kLinesHigh = Documented(0xA5);
constexpr LONG kSecondStartLow = Documented(0xA6);
constexpr LONG kSecondStartHigh = Documented(0xA7);

constexpr LONG kLatch = Documented(0x80);   // of kLinesHigh: the generator takes all six
constexpr LONG kFieldLines = Chosen(1015);  // 980 and 35 of blanking: exposures end with the field
constexpr LONG kShutterMask = 0x7FFF;

}  // namespace

/// 2584 x 1960 CCD with two fields behind the USB 2.0 controller.
class CZELModel33 : public FieldReadout<UsbCcd<CZELModel33>> {
 public:
  static constexpr LONG kType = 33;

  class CPropertyImpl : public ccdfield::Property<ByteRegisters<UsbProperty>> {
   public:
    CPropertyImpl() : Property(kType) {}

    HRESULT SetShutter(LONG lines) override {
      return Adjust(kShutter, lines, kShutterMask, [this](LONG value) {
        const LONG start = std::max<LONG>(kFieldLines - value, 0);
        const LONG writes[][2] = {{kFirstStartLow, start & 0xFF},  {kFirstStartHigh, start >> 8},
                                  {kLinesLow, value & 0xFF},       {kLinesHigh, value >> 8 | kLatch},
                                  {kSecondStartLow, start & 0xFF}, {kSecondStartHigh, start >> 8}};
        for (const auto& [address, byte] : writes) {
          if (FAILED(SetRegister(address, byte))) return E_FAIL;
        }
        return S_OK;
      });
    }
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel33() {
  return NewDevice<CZELModel33>();
}

}  // namespace zel
