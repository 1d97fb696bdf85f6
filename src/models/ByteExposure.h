#pragma once

#include "platform/ComponentTypes.h"
#include "property/PropertyIds.h"

namespace zel {

/// A sensor that takes shutter and gain in bytes, low byte first, each in a register of its own; a gain
/// counts once the control register is told so.
template <class Sensor>
class ByteExposure : public Sensor {
 public:
  HRESULT SetShutter(LONG lines) override {
    return this->Adjust(kShutter, lines, 0xFFFF, [this](LONG value) {
      return this->WriteParts(value, {{kShutterLow, 0xFF}, {kShutterHigh, 0xFF00, 8}});
    });
  }

  HRESULT SetDigitalGlobalGain(LONG gain) override {
    return this->Adjust(kDigitalGlobalGain, gain, 0x1FFF, [this](LONG value) {
      const HRESULT result = this->WriteParts(value, {{kGainLow, 0xFF}, {kGainHigh, 0x1F00, 8}});
      return FAILED(result) ? result : this->SwitchBits(kControl, kTakeGainBit, true);
    });
  }

 protected:
  using Sensor::Sensor;

  static constexpr LONG kShutterLow = Documented(0x08);
  static constexpr LONG kShutterHigh = Documented(0x09);
  static constexpr LONG kGainLow = Documented(0x1C);
  static constexpr LONG kGainHigh = Documented(0x1D);
  static constexpr LONG kControl = Documented(0x1E);
  static constexpr LONG kTakeGainBit = Chosen(0x01);  // of kControl
};

}  // namespace zel
