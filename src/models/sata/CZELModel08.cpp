#include "models/FinalDevice.h"
#include "models/sata/SataModelProperty.h"

namespace zel {
namespace {

// Registers of 24 bits.
constexpr LONG kGain = Chosen(0x04);
constexpr LONG kTrigger = Chosen(0x20);
constexpr LONG kTriggerDelay = Chosen(0x21);  // lines
constexpr LONG kShutterLines = Chosen(0x9A);
constexpr LONG kShutterOn = Chosen(0x802000);  // goes with the shutter's lines

// Transfer bits.
constexpr LONG kEightBits = 0;
constexpr LONG kTenBits = 1;

}  // namespace

/// 2456 x 2040 CCD with 24-bit registers, behind SATA. The controller cuts the window out of its picture.
class CZELModel08 : public CZELDeviceImplSATA {
 public:
  static constexpr LONG kType = 8;

  class CPropertyImpl : public SataModelProperty {
   public:
    CPropertyImpl() : SataModelProperty(kType) {}

    /// Two bytes per sample carry 10 bits of the converter's 12, which is what pictures are made of.
    HRESULT SetTransMode(LONG mode) override {
      const HRESULT result = SataModelProperty::SetTransMode(mode);
      return result == S_OK ? SetTransBits(mode != 0 ? kTenBits : kEightBits) : result;
    }

   protected:
    bool WriteSettings(SataRun run) override { return WriteSettingsWithWindow(run); }

    // All 24 bits, unlike the family's other cameras, and reads have to be asked for.
    bool WriteRegister24(LONG address, LONG value) override { return WriteWide(address, value, kWide24); }
    bool ReadRegister24(LONG address, LONG* value) override { return ReadWide(address, value, true); }

    LONG ApplyPostPrepare() override {
      LONG mode = 0;
      if (!ReadRegister24(kTrigger, &mode)) return E_FAIL;
      Settle();
      if (!WriteRegister24(kTrigger, WithBits(mode, 1, IsOn(kExtTrigger)))) return E_FAIL;
      Settle();
      return WriteRegister24(kTriggerDelay, 0) ? 1 : E_FAIL;
    }

    LONG ApplyGain() override {
      WriteRegister24(kGain, Current(kDigitalGlobalGain));
      return 1;
    }

    LONG ApplyShutter() override {
      WriteRegister24(kShutterLines, Current(kShutter) | kShutterOn);
      return 1;
    }
  };

 protected:
  CPropertyImpl property_;
};

CZELDevice* CreateModel08() {
  return NewDevice<CZELModel08>();
}

}  // namespace zel
