#include "models/FinalDevice.h"
#include "models/Map16.h"
#include "models/usb3t2/Usb3T2Model.h"

namespace zel {
namespace {

// Registers beyond those of the shared map.
constexpr LONG kShutterHigh = 0x08;  // bits 16 to 19 of the lines
constexpr LONG kClockControl = 0x0A;
constexpr LONG kHalfClockBit = 0x0001;  // of kClockControl

}  // namespace

/// 3096 x 2080 sensor with 16-bit registers, behind the FX3 controller.
class CZELModel98 : public AutoExposedModel<CZELModel98> {
 public:
  static constexpr LONG kType = 98;

  class CPropertyImpl : public map16::Property<Usb3T2Property> {
   public:
    CPropertyImpl() : Property(kType) {
      for (const LONG id : {kHorMirror, kVerMirror, kExtTrigger, kHalfClock, kAuxValue3, kAuxValue4})
        OfferSwitch(id);
    }

    HRESULT SetShutter(LONG lines) override {
      return SetClamped(kShutter, lines, [this](LONG value) {
        const HRESULT result = SetRegister(map16::kShutterLines, value & 0xFFFF);
        return FAILED(result) ? result : SetRegister(kShutterHigh, (value & 0xF0000) >> 16);
      });
    }

    HRESULT SetDigitalGlobalGain(LONG gain) override {
      return SetClamped(kDigitalGlobalGain, gain,
                        [this](LONG value) { return SetRegister(map16::kGain, value); });
    }

    bool ProgramWindow(const CaptureWindow& window) {
      map16::ReadModes modes;
      if (!GetReadModes(&modes)) return false;
      // From no sub-sampling on: its bits only ever add to those of the capture before.
      modes = map16::SubSampled(map16::SubSampled(modes, 0), Record(kSubSampleX).current);
      const LONG clock = Record(kHalfClock).current != 0 ? kHalfClockBit : 0;
      return SetReadModes(modes) && SUCCEEDED(SetRegister(kClockControl, clock)) && SetWindow(window);
    }
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel98() {
  return NewDevice<CZELModel98>();
}

}  // namespace zel
