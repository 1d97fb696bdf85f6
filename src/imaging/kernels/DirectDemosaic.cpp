#include "imaging/kernels/DirectDemosaic.h"

#include <algorithm>
#include <cstring>

namespace zel {
namespace {

constexpr int kBorder = 2;  // samples that the taps reach beyond a pixel
// With this gain one sixteenth of a sample step is already white, and a full sum still fits into 32 bits.
constexpr int kMaxGain = 1 << 19;

void Store(std::uint8_t* pixel, int red, int green, int blue) {
  pixel[0] = static_cast<std::uint8_t>(std::min(blue, 255));
  pixel[1] = static_cast<std::uint8_t>(std::min(green, 255));
  pixel[2] = static_cast<std::uint8_t>(std::min(red, 255));
  pixel[3] = 255;
}

struct ColorPixel {
  ColorGains gains;

  template <bool kRow, bool kColumn>
  void operator()(const std::uint8_t* p, std::ptrdiff_t pitch, std::uint8_t* pixel) const {
    const BayerSample sum = DirectColorAt(p, pitch, kRow, kColumn);
    // Red and blue are in sixteenths, gains in 1/128.
    Store(pixel, (sum.red * gains.r) >> 11, (sum.green * gains.g) >> 7, (sum.blue * gains.b) >> 11);
  }
};

struct GreyPixel {
  template <bool kRow, bool kColumn>
  void operator()(const std::uint8_t* p, std::ptrdiff_t pitch, std::uint8_t* pixel) const {
    const int grey = kRow != kColumn ? (p[-pitch] + p[-1]) >> 1 : (p[-pitch - 1] + p[0]) >> 1;
    Store(pixel, grey, grey, grey);
  }
};

/// Columns kBorder..width-kBorder-1 of one row; the flags are those of its first column, whose phase column
/// kBorder shares.
template <bool kRow, bool kColumn, class Pixel>
void ComputeRow(const std::uint8_t* samples, std::ptrdiff_t pitch, int width, const Pixel& pixel,
                std::uint8_t* out) {
  const int end = width - kBorder;
  int column = kBorder;
  for (; column + 1 < end; column += 2) {
    pixel.template operator()<kRow, kColumn>(samples + column, pitch, out + 4 * std::ptrdiff_t{column});
    pixel.template operator()<kRow, !kColumn>(samples + column + 1, pitch,
                                              out + 4 * std::ptrdiff_t{column + 1});
  }
  if (column < end) {
    pixel.template operator()<kRow, kColumn>(samples + column, pitch, out + 4 * std::ptrdiff_t{column});
  }
}

template <class Pixel>
void Demosaic(const std::uint8_t* frame, std::ptrdiff_t pitch, int width, int height, BayerPhase origin,
              int firstRow, int endRow, const Pixel& pixel, std::uint8_t* out, std::ptrdiff_t outStride) {
  if (width <= 2 * kBorder || height <= 2 * kBorder) return;
  using Compute = void (*)(const std::uint8_t*, std::ptrdiff_t, int, const Pixel&, std::uint8_t*);
  constexpr Compute kComputeRow[2][2] = {{ComputeRow<false, false, Pixel>, ComputeRow<false, true, Pixel>},
                                         {ComputeRow<true, false, Pixel>, ComputeRow<true, true, Pixel>}};
  int computed = -1;  // the source row of the output row before
  for (int row = firstRow; row < endRow; ++row) {
    std::uint8_t* pixels = out + row * outStride;
    const int source = std::clamp(row, kBorder, height - kBorder - 1);
    if (source == computed) {
      std::memcpy(pixels, pixels - outStride, std::size_t(width) * 4);
      continue;
    }
    const BayerPhase phase = PhaseAt(origin, source, 0);
    kComputeRow[phase.row][phase.column](frame + source * pitch, pitch, width, pixel, pixels);
    for (int border = 0; border < kBorder; ++border) {
      std::memcpy(pixels + 4 * border, pixels + 4 * kBorder, 4);
      std::memcpy(pixels + 4 * (std::ptrdiff_t{width} - 1 - border),
                  pixels + 4 * (std::ptrdiff_t{width} - 1 - kBorder), 4);
    }
    computed = source;
  }
}

}  // namespace

void DirectDemosaic(const std::uint8_t* frame, std::ptrdiff_t pitch, int width, int height, BayerPhase phase,
                    const ColorGains& gains, int firstRow, int endRow, std::uint8_t* out,
                    std::ptrdiff_t outStride) {
  const ColorPixel pixel{
      {std::clamp(gains.r, 0, kMaxGain), std::clamp(gains.g, 0, kMaxGain), std::clamp(gains.b, 0, kMaxGain)}};
  Demosaic(frame, pitch, width, height, phase, firstRow, endRow, pixel, out, outStride);
}

void DirectDemosaicGrey(const std::uint8_t* frame, std::ptrdiff_t pitch, int width, int height,
                        BayerPhase phase, int firstRow, int endRow, std::uint8_t* out,
                        std::ptrdiff_t outStride) {
  Demosaic(frame, pitch, width, height, phase, firstRow, endRow, GreyPixel{}, out, outStride);
}

}  // namespace zel
