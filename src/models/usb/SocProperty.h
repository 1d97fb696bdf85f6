#pragma once

#include "models/FinalDevice.h"
#include "models/SerialRegisters.h"
#include "models/usb/UsbModel.h"

/// The cameras whose CMOS sensor processes pictures on its own chip: 8-bit registers, high byte of a value
/// first.
namespace zel {

constexpr LONG kSocWindow = Chosen(0x10);  // left, top, columns, rows: two registers each
constexpr LONG kSocShutterHigh = Chosen(0x20);
constexpr LONG kSocShutterLow = Chosen(0x21);
constexpr LONG kSocGainHigh = Chosen(0x22);
constexpr LONG kSocGainLow = Chosen(0x23);
constexpr LONG kSocReadMode = Chosen(0x24);
constexpr LONG kSocMirrorColumns = Chosen(0x01);  // of kSocReadMode
constexpr LONG kSocMirrorRows = Chosen(0x02);
constexpr LONG kSocWhiteBalance = Chosen(0x25);  // 1: the chip balances white

/// Window, exposure, mirrors and white balance.
class SocProperty : public ModelProperty<ByteRegisters<UsbProperty>> {
 public:
  HRESULT SetShutter(LONG lines) override {
    return AdjustInRange(kShutter, lines,
                         [this](LONG value) { return SetWord(kSocShutterHigh, value) ? S_OK : E_FAIL; });
  }

  HRESULT SetDigitalGlobalGain(LONG gain) override {
    return AdjustInRange(kDigitalGlobalGain, gain,
                         [this](LONG value) { return SetWord(kSocGainHigh, value) ? S_OK : E_FAIL; });
  }

  HRESULT SetHorMirror(LONG on) override {
    const HRESULT result = SwitchSetting(kHorMirror, kSocReadMode, kSocMirrorColumns, on);
    return FAILED(result) ? result : ModelProperty::SetHorMirror(on);
  }

  HRESULT SetVerMirror(LONG on) override {
    const HRESULT result = SwitchSetting(kVerMirror, kSocReadMode, kSocMirrorRows, on);
    return FAILED(result) ? result : ModelProperty::SetVerMirror(on);
  }

  HRESULT SetAutoWhiteBalance(LONG mode) override {
    if (FAILED(SetRegister(kSocWhiteBalance, mode != 0))) return E_FAIL;
    return ModelProperty::SetAutoWhiteBalance(mode);
  }

  bool ProgramWindow(const CaptureWindow& window) {
    return SetWord(kSocWindow, window.x) && SetWord(kSocWindow + 2, window.y) &&
           SetWord(kSocWindow + 4, window.width) && SetWord(kSocWindow + 6, window.height);
  }

 protected:
  explicit SocProperty(LONG type) : ModelProperty(type) { OfferSwitches({kHorMirror, kVerMirror}); }

 private:
  bool SetWord(LONG address, LONG value) {
    return SUCCEEDED(WriteParts(value, {{address, 0xFF00, 8}, {address + 1, 0xFF}}));
  }
};

/// Their timing, in pixel clocks.
template <class Model>
class SocModel : public UsbModel<Model> {
 public:
  static constexpr UsbTiming kTiming = {.lineBlanking = 320};
};

}  // namespace zel
