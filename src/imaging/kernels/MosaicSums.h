#pragma once

#include <cstddef>
#include <cstdint>

namespace zel {

/// Sums of an 8-bit mosaic's samples by row and column parity.
struct MosaicSums {
  std::uint64_t at[2][2] = {};  ///< [odd row][odd column]
};

MosaicSums SumMosaic(const std::uint8_t* frame, std::ptrdiff_t stride, int width, int height);

}  // namespace zel
