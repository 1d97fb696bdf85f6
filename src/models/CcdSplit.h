#pragma once

#include "models/Ccd.h"

/// The register map of CCD cameras whose shutter and gain are split over pairs of 8-bit registers.
namespace zel::ccdsplit {

constexpr LONG kGainLow = Documented(0x06);
constexpr LONG kGainHigh = Documented(0x07);
constexpr LONG kShutterLow = Documented(0x9E);   // 6 bits
constexpr LONG kShutterHigh = Documented(0x9F);  // 6 bits
constexpr LONG kShutterMask = 0xFFF;

/// `kGainBits` of gain, `kGainLowBits` of them in the lower register.
template <class Registers, int kGainBits = 10, int kGainLowBits = 6>
class Property : public ccd::Property<Registers> {
 public:
  HRESULT SetShutter(LONG lines) override {
    return this->Adjust(kShutter, lines, kShutterMask, [this](LONG value) {
      return this->WriteParts(value, {{kShutterLow, 0x3F}, {kShutterHigh, 0xFC0, 6}});
    });
  }

  HRESULT SetDigitalGlobalGain(LONG gain) override {
    return this->Adjust(kDigitalGlobalGain, gain, kGainMask, [this](LONG value) {
      return this->WriteParts(value, {{kGainLow, kGainLowMask}, {kGainHigh, kGainMask, kGainLowBits}});
    });
  }

 protected:
  using ccd::Property<Registers>::Property;

 private:
  static constexpr LONG kGainMask = (1 << kGainBits) - 1;
  static constexpr LONG kGainLowMask = (1 << kGainLowBits) - 1;
};

}  // namespace zel::ccdsplit
