#pragma once

#include "sim/SensorMap.h"

namespace zel {

/// Gain proportional to the register value.
constexpr double LinearGain(std::uint32_t code) {
  return code;
}

extern const SensorMap kSensorType1;
extern const SensorMap kSensorType13;
extern const SensorMap kSensorType67;
extern const SensorMap kSensorType78;
extern const SensorMap kSensorType98;

}  // namespace zel
