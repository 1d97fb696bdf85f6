#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

#include "imaging/kernels/BayerTaps.h"

namespace zel {

constexpr int kFullLight = 32767;  ///< linear light of the largest sample, and luminance of white
constexpr int kUnitWeight = 1 << 15;

/// The cells of 2 x 2 samples in every second row of cells. Sample rows have slack.
struct CellGrid {
  const std::uint8_t* samples;
  std::ptrdiff_t stride;  ///< bytes
  int columns, rows;      ///< cells
  BayerPhase phase;       ///< of the first sample
};

/// From samples to X, Y and Z: light of each sample value, and weights of red, green and blue light for each
/// of the three, in 1/kUnitWeight. Weights may exceed 1 together, not alone.
struct ColorSpace {
  const std::uint16_t* light;  ///< 256 entries up to kFullLight
  std::int16_t weights[3][3];
};

/// Which cells count: Y not below, and no coordinate above.
struct CellLimits {
  std::int32_t darkestY = 0;
  std::int32_t brightest[3] = {std::numeric_limits<std::int32_t>::max(),
                               std::numeric_limits<std::int32_t>::max(),
                               std::numeric_limits<std::int32_t>::max()};
};

/// Of red, green and blue light.
struct CellSums {
  std::uint64_t light[3] = {};
  std::uint64_t count = 0;
};

/// Sums the light of the cells within the limits. A cell's colour is its red, its blue and the mean of its
/// two greens, rounded up; each coordinate is (weighted light) >> 15.
CellSums SumCells(const CellGrid& grid, const ColorSpace& space, const CellLimits& limits);

}  // namespace zel
