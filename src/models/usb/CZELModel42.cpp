#include "models/usb/UsbCcd.h"

namespace zel {
namespace {

// Registers of the camera head's picture processor; signed values in two's complement.
constexpr LONG kSampleFormat = Chosen(0x40);  // 0: 8 bits, 1: all of them
constexpr LONG kColour = Chosen(0x41);        // 0: luminance only
constexpr LONG kSaturationIn = Chosen(0x42);
constexpr LONG kBrightnessIn = Chosen(0x43);
constexpr LONG kContrastIn = Chosen(0x44);
constexpr LONG kHueIn = Chosen(0x45);  // degrees
constexpr LONG kBalance = Chosen(0x46);

constexpr LONG kHighestBalance = 255;
constexpr LONG kEvenBalance = 128;

}  // namespace

/// 860 x 944 camera head with a fixed frame and its own picture processor, behind the USB 2.0 controller.
/// `SetModelValue1` to `3` are its red, green and blue balance, 0..255. The colour settings act on the head's
/// monitor output and on the library's pictures alike.
class CZELModel42 : public UsbCcd<CZELModel42> {
 public:
  static constexpr LONG kType = 42;

  class CPropertyImpl : public FpgaTimed<UsbProperty> {
   public:
    CPropertyImpl() : FpgaTimed(kType) {}

    HRESULT SetROI(LONG, LONG, LONG, LONG) override { return E_NOTIMPL; }

    HRESULT SetTransMode(LONG mode) override {
      if (mode < 0) return E_INVALIDARG;
      if (IsAttached() && FAILED(SetRegister(kSampleFormat, mode != 0))) return E_FAIL;
      return FpgaTimed::SetTransMode(mode);
    }

    HRESULT SetColorful(LONG on) override {
      return FAILED(SetRegister(kColour, on != 0)) ? E_FAIL : FpgaTimed::SetColorful(on);
    }
    HRESULT SetSaturation(LONG value) override {
      return Tell(kSaturation, kSaturationIn, value) ? FpgaTimed::SetSaturation(value) : E_FAIL;
    }
    HRESULT SetBrightness(LONG value) override {
      return Tell(kBrightness, kBrightnessIn, value) ? FpgaTimed::SetBrightness(value) : E_FAIL;
    }
    HRESULT SetContrast(LONG value) override {
      return Tell(kContrast, kContrastIn, value) ? FpgaTimed::SetContrast(value) : E_FAIL;
    }
    HRESULT SetHue(LONG value) override {
      return Tell(kHue, kHueIn, value) ? FpgaTimed::SetHue(value) : E_FAIL;
    }

    HRESULT SetModelValue1(LONG value) override { return SetBalance(0, value); }
    HRESULT GetModelValue1(LONG* value) override { return GetBalance(0, value); }
    HRESULT SetModelValue2(LONG value) override { return SetBalance(1, value); }
    HRESULT GetModelValue2(LONG* value) override { return GetBalance(1, value); }
    HRESULT SetModelValue3(LONG value) override { return SetBalance(2, value); }
    HRESULT GetModelValue3(LONG* value) override { return GetBalance(2, value); }

    bool ProgramWindow(const CaptureWindow&) { return true; }

   private:
    /// What the generic setter will refuse is not sent.
    bool Tell(LONG id, LONG address, LONG value) {
      return value != Clamped(id, value) || SUCCEEDED(SetRegister(address, value & 0xFFFF));
    }

    HRESULT SetBalance(LONG channel, LONG value) {
      if (value < 0 || value > kHighestBalance) return E_INVALIDARG;
      if (FAILED(SetRegister(kBalance + channel, value))) return E_FAIL;
      balance_[static_cast<std::size_t>(channel)] = value;
      return S_OK;
    }
    HRESULT GetBalance(std::size_t channel, LONG* value) const {
      Put(value, balance_[channel]);
      return S_OK;
    }

    std::array<LONG, 3> balance_{kEvenBalance, kEvenBalance, kEvenBalance};  ///< red, green, blue
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel42() {
  return NewDevice<CZELModel42>();
}

}  // namespace zel
