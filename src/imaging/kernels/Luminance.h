#pragma once

#include <cstddef>
#include <cstdint>

namespace zel {

/// Sum of the luminance of blue, green, red pixels of 3 or 4 bytes, each the integer part of
/// 0.299 R + 0.587 G + 0.114 B + 0.5 in single precision.
std::uint64_t SumLuminance(const std::uint8_t* pixels, std::size_t count, int pixelBytes);

}  // namespace zel
