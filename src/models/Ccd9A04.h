#pragma once

#include "models/Ccd.h"

/// The register map of CCD cameras with the shutter in one register of the timing generator and the gain in
/// one of the analogue front end.
namespace zel::ccd9a04 {

constexpr LONG kGain = 0x04;
constexpr LONG kShutterLines = 0x9A;
constexpr LONG kShutterMask = 0x1FFF;  // what lies above commands the generator
constexpr LONG kGainMask = 0x3FF;

/// `kShutterCommand`: bits that the timing generator wants with every shutter.
template <class Registers, LONG kShutterCommand = 0>
class Property : public ccd::Property<Registers> {
 public:
  HRESULT SetShutter(LONG lines) override {
    return this->Adjust(kShutter, lines, kShutterMask, [this](LONG value) {
      return this->SetRegister(kShutterLines, value | kShutterCommand);
    });
  }

  HRESULT SetDigitalGlobalGain(LONG gain) override {
    return this->Adjust(kDigitalGlobalGain, gain, kGainMask,
                        [this](LONG value) { return this->SetRegister(kGain, value); });
  }

 protected:
  using ccd::Property<Registers>::Property;
};

}  // namespace zel::ccd9a04
