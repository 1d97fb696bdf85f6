#pragma once

#include "models/Ccd.h"

/// The register map of the 5-megapixel CCD cameras: 8-bit registers, lines counted in fields.
namespace zel::ccdfield {

constexpr LONG kGainLow = Documented(0x02);
constexpr LONG kGainHigh = Documented(0x03);
constexpr LONG kGainMask = 0x3FF;

template <class Registers>
class Property : public ccd::Property<Registers> {
 public:
  HRESULT SetDigitalGlobalGain(LONG gain) override {
    return this->Adjust(kDigitalGlobalGain, gain, kGainMask, [this](LONG value) {
      return this->WriteParts(value, {{kGainLow, 0xFF}, {kGainHigh, 0x300, 8}});
    });
  }

 protected:
  using ccd::Property<Registers>::Property;
};

}  // namespace zel::ccdfield
