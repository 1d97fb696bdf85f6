#pragma once

#include <cstdint>

/// Splitting integers into the bytes that travel to a camera, and back.
namespace zel {

/// Byte n of a value, 0 = least significant.
template <class Integer>
constexpr std::uint8_t ByteOf(Integer value, unsigned n) {
  return static_cast<std::uint8_t>(static_cast<std::uint64_t>(value) >> (8 * n));
}

constexpr std::uint16_t FromBytes16(std::uint8_t low, std::uint8_t high) {
  return static_cast<std::uint16_t>(low | (high << 8));
}

inline void StoreLittle32(std::uint8_t* out, std::uint32_t value) {
  for (unsigned n = 0; n < 4; ++n) out[n] = ByteOf(value, n);
}

inline std::uint32_t LoadLittle32(const std::uint8_t* in) {
  return static_cast<std::uint32_t>(FromBytes16(in[0], in[1])) |
         (static_cast<std::uint32_t>(FromBytes16(in[2], in[3])) << 16);
}

/// The next multiple of `unit`, or the value itself when it is one. Values and units are not negative.
template <class Integer>
constexpr Integer RoundUp(Integer value, Integer unit) {
  return (value + unit - 1) / unit * unit;
}

}  // namespace zel
