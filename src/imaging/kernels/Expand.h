#pragma once

#include <cstddef>
#include <cstdint>

namespace zel {

/// Grey samples to 32-bit pixels whose fourth byte is `alpha`.
void ExpandGrey(const std::uint8_t* grey, std::size_t pixels, std::uint8_t alpha, std::uint8_t* bgra);

/// Packed 24-bit pixels to 32-bit pixels whose fourth byte is 255.
void ExpandPacked(const std::uint8_t* bgr, std::size_t pixels, std::uint8_t* bgra);

}  // namespace zel
