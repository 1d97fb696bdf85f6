#pragma once

#include <cstddef>
#include <cstdint>

namespace zel {

/// YUV 4:2:2 (byte order Y0 U Y1 V) to 32-bit pixels, two for each group of four bytes.
///
/// With u = U - 128 and v = V - 128: R = Y + 1.14 v, G = Y - 0.34414 u - 0.71414 v, B = Y + 1.772 u, rounded
/// to nearest (ties upward) and limited to 0..255. Red follows analogue video, green and blue the digital
/// standard (ITU-R BT.601).
void YuvToPixels(const std::uint8_t* yuv, std::size_t groups, std::uint8_t* bgra);

}  // namespace zel
