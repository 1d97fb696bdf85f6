#pragma once

#include "sim/SensorMap.h"

namespace zel {

/// Gain proportional to the register value.
constexpr double LinearGain(std::uint32_t code) {
  return code;
}

// The sensors by their register map; one file each.
std::span<const SensorMap> Map16Sensors();    ///< 16-bit registers from 0x01 to 0x35
std::span<const SensorMap> Map3040Sensors();  ///< 16-bit addresses, mirrors in 0x3040
std::span<const SensorMap> CcdSensors();      ///< timing generator and analogue front end
std::span<const SensorMap> SataSensors();
std::span<const SensorMap> OtherSensors();  ///< maps of a single type

}  // namespace zel
