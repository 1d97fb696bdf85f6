#pragma once

#include <cstdint>

#include "imaging/ColorMatrix.h"
#include "imaging/kernels/PlaneRow.h"

namespace zel {

/// Gains in 1/4096, each 0..2^19.
struct PlaneGains {
  static constexpr std::int32_t kShift = 12;
  std::int32_t r = 1 << kShift, g = 1 << kShift, b = 1 << kShift;
  bool operator==(const PlaneGains&) const = default;
};

/// What happens to each colour, in this order: gains, matrix, table. Every step limits to 0..255:
/// (v * gain + 2048) >> 12, then (matrix sum in 1/64 + 32) >> 6, then the table.
struct PixelTones {
  PlaneGains gains;
  const FixedColorMatrix* matrix = nullptr;  ///< null: none
  const std::uint8_t* gamma = nullptr;       ///< 256 entries for all three colours; null: none
};

/// In place on a row of colours with slack.
void ApplyTones(const PlaneRow& row, int width, const PixelTones& tones);

}  // namespace zel
