#pragma once

#include <cstdint>
#include <span>

#include "imaging/kernels/FocusRows.h"

namespace zel {

/// The arithmetic of the autofocus: 32-bit integers, every division truncates. A block is `width` x `height`
/// grey values of 0..255, row by row without gaps; the outermost values only serve as neighbours.

/// Replaces every value that has eight neighbours by the median of its 3 x 3 surroundings. `scratch` has the
/// size of the block.
void MedianFilter(std::span<std::uint32_t> block, std::span<std::uint32_t> scratch, int width, int height);

/// The response that counts as full sharpness for a block of this brightness: 23..668.
std::int32_t FocusThreshold(std::span<const std::uint32_t> block, int width, int height);

/// Mean of the nine strongest filter responses; missing ones count as 0, and so does an unknown filter.
std::int32_t FocusValue(std::span<const std::uint32_t> block, int width, int height, FocusFilter filter);

/// A hill climb over lens positions: coarse steps until the focus value changes clearly, then fine ones.
struct FocusSearch {
  static constexpr std::int32_t kCoarseStep = 32;

  std::int32_t minimum = 0;
  std::int32_t maximum = 255;
  std::int32_t current = 0;  ///< the position to try next
  std::int32_t bestPosition = 0;
  std::int32_t bestValue = 0;
  std::int32_t step = kCoarseStep;
  std::int32_t direction = 1;
  std::int32_t fineRounds = 0;  ///< evaluations at step 1 so far; single searches only
  bool continuous = false;      ///< false: ends by itself

  /// Takes the focus value and threshold measured at `current` and moves `current` on. True when a single
  /// search is done.
  bool Advance(std::int32_t value, std::int32_t threshold);
};

}  // namespace zel
