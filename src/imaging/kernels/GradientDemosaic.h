#pragma once

#include <cstddef>
#include <cstdint>

#include "imaging/ColorMatrix.h"
#include "imaging/kernels/BayerTaps.h"

namespace zel {

/// A mosaic whose samples may be read two rows and two columns beyond each edge.
struct MosaicView {
  const std::uint8_t* samples = nullptr;  ///< top left sample
  std::ptrdiff_t stride = 0;              ///< bytes
  int width = 0;
  BayerPhase phase;  ///< of the top left sample
};

/// Gains in 1/4096, each 0..2^19.
struct PlaneGains {
  static constexpr std::int32_t kShift = 12;
  std::int32_t r = 1 << kShift, g = 1 << kShift, b = 1 << kShift;
};

/// What happens to each interpolated colour, in this order: gains, matrix, table.
struct PixelTones {
  PlaneGains gains;
  const FixedColorMatrix* matrix = nullptr;  ///< null: none
  const std::uint8_t* gamma = nullptr;       ///< 256 entries for all three colours; null: none
};

/// Gradient-corrected linear interpolation in a 5 x 5 neighbourhood (H. S. Malvar, L. He, R. Cutler, ICASSP
/// 2004) of rows firstRow..endRow-1, written as blue, green, red and, for pixelBytes 4 (else 3), 255.
///
/// Arithmetic: interpolated colour = (sum in sixteenths + 8) >> 4; gained = (v * gain + 2048) >> 12; matrix =
/// (sum in 1/64 + 32) >> 6; each result is limited to 0..255 before the next step.
void GradientDemosaic(const MosaicView& mosaic, int firstRow, int endRow, const PixelTones& tones,
                      int pixelBytes, std::uint8_t* out, std::ptrdiff_t outStride);

/// The green of the same interpolation as grey pixels, without gains and tones.
void GradientDemosaicGrey(const MosaicView& mosaic, int firstRow, int endRow, int pixelBytes,
                          std::uint8_t* out, std::ptrdiff_t outStride);

}  // namespace zel
