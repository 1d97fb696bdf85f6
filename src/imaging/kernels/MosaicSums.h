#pragma once

#include <cstddef>
#include <cstdint>

namespace zel {

/// Sums of an 8-bit mosaic's samples by row and column parity.
struct MosaicSums {
  std::uint64_t at[2][2] = {};  ///< [odd row][odd column]
};

/// Adds rows, of which the first counts as even.
void AddMosaic(const std::uint8_t* frame, std::ptrdiff_t stride, int width, int height, MosaicSums& sums);

inline MosaicSums SumMosaic(const std::uint8_t* frame, std::ptrdiff_t stride, int width, int height) {
  MosaicSums sums;
  AddMosaic(frame, stride, width, height, sums);
  return sums;
}

}  // namespace zel
