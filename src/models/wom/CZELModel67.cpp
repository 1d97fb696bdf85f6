#include "models/FinalDevice.h"
#include "models/Map16.h"
#include "models/wom/WomModel.h"

namespace zel {
namespace {

constexpr LONG kReadModeMask = 0xFFF8;  // bits 0 to 2 of both read modes are cleared for capture

}  // namespace

/// 1280 x 1024 sensor with 16-bit registers, behind the WOM controller and FPGA.
class CZELModel67 : public WomModel<CZELModel67> {
 public:
  static constexpr LONG kType = 67;

  class CPropertyImpl : public map16::Property<CZELDevicePropertyImplWOM> {
   public:
    CPropertyImpl() : Property(kType) {
      for (const LONG id : {kHorMirror, kVerMirror, kExtTrigger}) OfferSwitch(id);
      Edit(kHalfClock) = {.minimum = 0, .maximum = 5, .supported = 1};  // divider steps of the FPGA's clock
    }

    HRESULT SetShutter(LONG lines) override {
      lines = Clamped(kShutter, lines);
      if (FAILED(SetRegister(map16::kShutterLines, lines))) return E_FAIL;
      return CZELDevicePropertyImplWOM::SetShutter(lines);
    }

    HRESULT SetDigitalGlobalGain(LONG gain) override {
      gain = Clamped(kDigitalGlobalGain, gain);
      if (FAILED(SetRegister(map16::kGain, gain))) return E_FAIL;
      return CZELDevicePropertyImplWOM::SetDigitalGlobalGain(gain);
    }

    bool ProgramWindow(const CaptureWindow& window) {
      map16::ReadModes modes;
      if (!GetReadModes(&modes)) return false;
      modes = {modes.mode1 & kReadModeMask, modes.mode2 & kReadModeMask};
      modes = map16::SubSampled(modes, Record(kSubSampleX).current);
      return SetWindow(window) && SetReadModes(modes);
    }
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel67() {
  return NewDevice<CZELModel67>();
}

}  // namespace zel
