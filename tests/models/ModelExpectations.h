#pragma once

#include <span>
#include <string_view>

#include "models/ModelTable.h"
#include "property/CZELDeviceProperty.h"

namespace zel::test {

using Setter = HRESULT (CZELDeviceProperty::*)(LONG);

/// What a call on the just opened simulated camera of a type leads to.
struct Expectation {
  LONG type;
  Setter set;
  LONG value;
  /// Accesses to the sensor, "read ADDRESS=VALUE; write ADDRESS=VALUE" in hexadecimal; of a SATA camera also
  /// those of the next capture preparation.
  std::string_view registers;
  LONG id;      ///< of the record that keeps the value
  LONG stored;  ///< its current value afterwards
  HRESULT result = S_OK;
};

constexpr Setter kShutterSetter = &CZELDeviceProperty::SetShutter;
constexpr Setter kGainSetter = &CZELDeviceProperty::SetDigitalGlobalGain;
constexpr Setter kAnalogGainSetter = &CZELDeviceProperty::SetAnalogGlobalGain;
constexpr Setter kHorMirrorSetter = &CZELDeviceProperty::SetHorMirror;
constexpr Setter kVerMirrorSetter = &CZELDeviceProperty::SetVerMirror;
constexpr Setter kTriggerSetter = &CZELDeviceProperty::SetExtTrigger;
constexpr Setter kHalfClockSetter = &CZELDeviceProperty::SetHalfClock;

// One list per kind of sensor; each in a file of its own.
std::span<const Expectation> CmosExpectations();  ///< 16-bit and 0x3040 maps, all families but SATA
std::span<const Expectation> CcdExpectations();
std::span<const Expectation> SataExpectations();

}  // namespace zel::test
