#pragma once

#include "platform/ComponentTypes.h"

namespace zel {

/// A USB 2.0 camera whose first output, bit 2 of the I/O port, is the flash output of its sensor: a bit of
/// one register lets the sensor fire there.
template <class Sensor, LONG Register, LONG Bit>
class StrobePort : public Sensor {
 public:
  HRESULT SetIO(LONG value) override {
    if (FAILED(this->SwitchBits(Register, Bit, (value & kFirstOutput) != 0))) return E_FAIL;
    return Sensor::SetIO(value);
  }

 protected:
  using Sensor::Sensor;

 private:
  static constexpr LONG kFirstOutput = 0x4;
};

}  // namespace zel
