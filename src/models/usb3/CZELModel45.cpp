#include "models/FinalDevice.h"
#include "models/Map16.h"
#include "models/usb3/DiskModel.h"

namespace zel {
namespace {

constexpr LONG kChipVersion = Chosen(0x00);

// The bits above these belong to the sensor's factory setting and stay.
constexpr LONG kShutterBits = Chosen(0x1FFF);
constexpr LONG kGainBits = Chosen(0x3F);

}  // namespace

/// 2560 x 1920 sensor with 16-bit registers, behind a USB 3.0 disk. `GetModelValue1` to `GetModelValue3` tell
/// what the sensor itself holds: its version, shutter and gain.
class CZELModel45 : public DiskModel<CZELModel45> {
 public:
  static constexpr LONG kType = 45;

  class CProperty : public map16::Property<DiskProperty> {
   public:
    CProperty() : Property(kType) { OfferSwitches({kHorMirror, kVerMirror}); }

    HRESULT SetShutter(LONG lines) override {
      return Adjust(kShutter, lines, kShutterBits, [this](LONG value) {
        return ModifyRegister(map16::kShutterLines, ~kShutterBits, value);
      });
    }
    HRESULT SetDigitalGlobalGain(LONG gain) override {
      return Adjust(kDigitalGlobalGain, gain, kGainBits,
                    [this](LONG value) { return ModifyRegister(map16::kGain, ~kGainBits, value); });
    }

    HRESULT GetModelValue1(LONG* version) override { return GetRegister(kChipVersion, version); }
    HRESULT GetModelValue2(LONG* lines) override {
      return GetField(map16::kShutterLines, kShutterBits, lines);
    }
    HRESULT GetModelValue3(LONG* gain) override { return GetField(map16::kGain, kGainBits, gain); }

    /// The camera has no reset: mirrors of the program before go with the window.
    bool ProgramWindow(const CaptureWindow& window) {
      map16::ReadModes modes;
      if (!GetReadModes(&modes)) return false;
      modes.mode2 &= ~(map16::kMirrorColumnsBit | map16::kMirrorRowsBit);
      if (Record(kHorMirror).current != 0) modes.mode2 |= map16::kMirrorColumnsBit;
      if (Record(kVerMirror).current != 0) modes.mode2 |= map16::kMirrorRowsBit;
      return SetReadModes(map16::SubSampled(modes, 0)) && SetWindow(window);
    }

   private:
    HRESULT GetField(LONG address, LONG bits, LONG* value) {
      LONG held = 0;
      const HRESULT result = GetRegister(address, &held);
      if (SUCCEEDED(result)) Put(value, held & bits);
      return result;
    }
  };

  CProperty property_;
};

CZELDevice* CreateModel45() {
  return NewDevice<CZELModel45>();
}

}  // namespace zel
