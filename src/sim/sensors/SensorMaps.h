#pragma once

#include "sim/SensorMap.h"

namespace zel {

/// Size of a sensor in pixels.
struct PixelSize {
  int width, height;
};

/// The small sensors' clock and that of those beyond two megapixels, which keeps them at useful rates.
constexpr double PixelClockOf(PixelSize size) {
  return size.width * size.height < 2'000'000 ? 48e6 : 96e6;
}

/// A 0..1 field.
constexpr RegisterField Bit(std::uint16_t address, std::uint8_t bit) {
  return {{{address, bit, 1}}};
}

/// Gain proportional to the register value.
constexpr double LinearGain(std::uint32_t code) {
  return code;
}

// The sensors by their register map; one file each.
std::span<const SensorMap> Map16Sensors();    ///< 16-bit registers from 0x01 to 0x35
std::span<const SensorMap> Map3040Sensors();  ///< 16-bit addresses, mirrors in 0x3040
std::span<const SensorMap> WideVgaSensors();  ///< 16-bit registers, shutter in 0x0B
std::span<const SensorMap> ByteSensors();     ///< settings in bytes, spread over registers
std::span<const SensorMap> CcdSensors();      ///< timing generator and analogue front end
std::span<const SensorMap> SataSensors();
std::span<const SensorMap> OtherSensors();  ///< maps of a single type

}  // namespace zel
