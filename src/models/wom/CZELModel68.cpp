#include <atomic>

#include "models/ByteExposure.h"
#include "models/FinalDevice.h"
#include "models/SwitchedProperty.h"
#include "models/wom/WomModel.h"

namespace zel {
namespace {

constexpr LONG kMirrors = Documented(0x01);
constexpr LONG kMirrorRowsBit = Chosen(0x01);
constexpr LONG kMirrorColumnsBit = Chosen(0x02);
constexpr LONG kTriggerBit = Chosen(0x80);  // of the control register

// The window, low byte first in each pair.
constexpr LONG kColumnStart = Chosen(0x10);
constexpr LONG kRowStart = Chosen(0x12);
constexpr LONG kColumns = Chosen(0x14);
constexpr LONG kRows = Chosen(0x16);
constexpr LONG kSkipping = Chosen(0x18);  // the sub-sampling code

}  // namespace

/// 1328 x 1048 sensor with registers of one byte, behind the WOM controller and FPGA. A setting of several
/// bytes may change in the middle of a frame, which is then not shown.
class CZELModel68 : public WomModel<CZELModel68> {
 public:
  static constexpr LONG kType = 68;

  class CPropertyImpl : public ByteExposure<SwitchedProperty<WomProperty>> {
   public:
    CPropertyImpl()
        : ByteExposure(kType, SensorSwitches{.horMirror = {kMirrors, kMirrorColumnsBit},
                                             .verMirror = {kMirrors, kMirrorRowsBit},
                                             .trigger = {kControl, kTriggerBit}}) {
      OfferSwitches({kHorMirror, kVerMirror, kExtTrigger});
    }

    HRESULT SetRegister(LONG address, LONG value) override {
      return SetRegisterB(static_cast<unsigned char>(address), static_cast<unsigned char>(value));
    }
    HRESULT GetRegister(LONG address, LONG* value) override {
      return GetRegisterB(static_cast<unsigned char>(address), value);
    }

    HRESULT SetShutter(LONG lines) override { return Tearing(ByteExposure::SetShutter(lines)); }
    HRESULT SetDigitalGlobalGain(LONG gain) override {
      return Tearing(ByteExposure::SetDigitalGlobalGain(gain));
    }

    bool ProgramWindow(const CaptureWindow& window) {
      const std::pair<LONG, LONG> values[] = {
          {kColumnStart, window.x}, {kRowStart, window.y}, {kColumns, window.width}, {kRows, window.height}};
      for (const auto& [address, value] : values) {
        if (FAILED(WriteParts(value, {{address, 0xFF}, {address + 1, 0xFF00, 8}}))) return false;
      }
      tornFrame_ = false;
      return SUCCEEDED(SetRegister(kSkipping, Record(kSubSampleX).current));
    }

    /// Whether a setting has changed since the last call.
    bool TakeTornFrame() { return tornFrame_.exchange(false); }

   private:
    /// The frame of the moment may have met only some of the bytes. A triggered camera exposes between
    /// settings.
    HRESULT Tearing(HRESULT result) {
      tornFrame_ = Record(kExtTrigger).current == 0;
      return result;
    }

    std::atomic<bool> tornFrame_ = false;
  };

  LONG ReadFrame(unsigned char* buffer) override {
    if (CZELDeviceImplWOM::ReadFrame(buffer) == 0) return 0;
    return property_.TakeTornFrame() ? CZELDeviceImplWOM::ReadFrame(buffer) : 1;
  }

  CPropertyImpl property_;
};

CZELDevice* CreateModel68() {
  return NewDevice<CZELModel68>();
}

}  // namespace zel
