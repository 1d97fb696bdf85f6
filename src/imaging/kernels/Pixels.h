#pragma once

#include <cstddef>
#include <cstdint>

#include "imaging/kernels/PlaneRow.h"

namespace zel {

/// A row of colours to pixels of 4 bytes (the fourth is 255) or 3. With `streaming`, 32-bit pixels, which
/// must lie on multiples of 4, go past the cache: worth it for pictures that do not fit there. After the last
/// such row `FinishStreaming` makes them visible to other threads.
void StorePixels(const PlaneRow& row, int width, int pixelBytes, bool streaming, std::uint8_t* out);
void FinishStreaming();

/// Grey samples to 32-bit pixels whose fourth byte is `alpha`.
void ExpandGrey(const std::uint8_t* grey, std::size_t pixels, std::uint8_t alpha, std::uint8_t* bgra);

/// Packed 24-bit pixels to 32-bit pixels whose fourth byte is 255.
void ExpandPacked(const std::uint8_t* bgr, std::size_t pixels, std::uint8_t* bgra);

}  // namespace zel
