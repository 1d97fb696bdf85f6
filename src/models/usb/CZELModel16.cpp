#include "models/usb/SocProperty.h"

namespace zel {
namespace {

/// A correction of the chip: the record of its setting, its register, its highest step. 0 is off.
struct Correction {
  LONG id;
  LONG address;
  LONG highest;
};

constexpr Correction kWhitePixels = {kWhitePixelCanceling, Chosen(0x30), 1};
constexpr Correction kBlackPixels = {kBlackPixelCanceling, Chosen(0x31), 1};
constexpr Correction kNoise = {kDenoise, Chosen(0x32), 3};
constexpr Correction kEdges = {kEdgeEnhance, Chosen(0x33), 7};
constexpr Correction kShading = {kLensCorrection, Chosen(0x34), 1};
constexpr Correction kNight = {kNightMode, Chosen(0x35), 1};  // frames may take longer than the line allows

// The chip's tone controls, for its own statistics.
constexpr LONG kGammaTable = Chosen(0x36);
constexpr LONG kSaturationIn = Chosen(0x37);  // two's complement
constexpr LONG kBrightnessHigh = Chosen(0x38);
constexpr LONG kBrightnessLow = Chosen(0x39);  // both in two's complement

constexpr LONG kGammaKnees = Chosen(0x40);  // a register for each of the programmable gamma's records
constexpr LONG kHighestKnee = 255;
constexpr LONG kFirstKnee = kModelFirst;
constexpr LONG kKnees = 6;

}  // namespace

/// 1280 x 1024 CMOS sensor with picture processing behind the USB 2.0 controller. The programmable gamma's
/// six knees are the records 42 to 47.
class CZELModel16 : public SocModel<CZELModel16> {
 public:
  static constexpr LONG kType = 16;

  class CPropertyImpl : public SocProperty {
   public:
    CPropertyImpl() : SocProperty(kType) {
      for (const Correction& correction : {kWhitePixels, kBlackPixels, kNoise, kEdges, kShading, kNight})
        Edit(correction.id) = {.maximum = correction.highest, .supported = 1};
      for (LONG knee = 0; knee < kKnees; ++knee) {
        const LONG straight = (knee + 1) * kHighestKnee / (kKnees + 1);
        Edit(kFirstKnee + knee) = {
            .maximum = kHighestKnee, .defaultValue = straight, .current = straight, .supported = 1};
      }
    }

    HRESULT SetWhitePixelCanceling(LONG value) override {
      return Tell(kWhitePixels.id, kWhitePixels.address, value) ? SocProperty::SetWhitePixelCanceling(value)
                                                                : E_FAIL;
    }
    HRESULT SetBlackPixelCanceling(LONG value) override { return Correct(kBlackPixels, value); }
    HRESULT SetDenoise(LONG value) override { return Correct(kNoise, value); }
    HRESULT SetEdgeEnhance(LONG value) override { return Correct(kEdges, value); }
    HRESULT SetLensCorrection(LONG value) override { return Correct(kShading, value); }
    HRESULT SetNightMode(LONG value) override { return Correct(kNight, value); }

    HRESULT SetGamma(LONG value) override {
      return Tell(kGamma, kGammaTable, value) ? SocProperty::SetGamma(value) : E_FAIL;
    }
    HRESULT SetSaturation(LONG value) override {
      return Tell(kSaturation, kSaturationIn, value) ? SocProperty::SetSaturation(value) : E_FAIL;
    }
    HRESULT SetBrightness(LONG value) override {
      const bool told =
          Tell(kBrightness, kBrightnessHigh, value, 8) && Tell(kBrightness, kBrightnessLow, value);
      return told ? SocProperty::SetBrightness(value) : E_FAIL;
    }

    HRESULT SetProgrammableGamma(LONG id, LONG value) override {
      if (id < kFirstKnee || id >= kFirstKnee + kKnees) return E_NOTIMPL;
      return Tell(id, kGammaKnees + id - kFirstKnee, value) ? SocProperty::SetProgrammableGamma(id, value)
                                                            : E_FAIL;
    }

   private:
    HRESULT Correct(const Correction& correction, LONG value) {
      return Tell(correction.id, correction.address, value) ? SetProperty(correction.id, value) : E_FAIL;
    }

    /// A byte of the value; what the generic setter will refuse is not sent.
    bool Tell(LONG id, LONG address, LONG value, int shift = 0) {
      return value != Clamped(id, value) || SUCCEEDED(SetRegister(address, value >> shift & 0xFF));
    }
  };

  CPropertyImpl property_;
};

CZELDevice* CreateModel16() {
  return NewDevice<CZELModel16>();
}

}  // namespace zel
