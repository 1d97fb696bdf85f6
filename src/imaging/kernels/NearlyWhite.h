#pragma once

#include <cstddef>
#include <cstdint>

#include "imaging/kernels/BayerTaps.h"

namespace zel {

struct WhiteSums {
  std::uint64_t red = 0, green = 0, blue = 0, count = 0;
};

/// Adds the plain bilinear colours of columns 2..width-3 of one row that are nearly white:
/// Y - |Cb| - |Cr| > 200.5. `row` are two-byte samples, little-endian, `pitch` samples from row to row; two
/// rows above and one below are read, each from its first to its last sample. `phase` is that of the row's
/// first sample.
void AddNearlyWhite(const std::uint8_t* row, std::ptrdiff_t pitch, int width, BayerPhase phase,
                    WhiteSums& sums);

}  // namespace zel
