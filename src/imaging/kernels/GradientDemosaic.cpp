#include "imaging/kernels/GradientDemosaic.h"

#include <algorithm>
#include <array>

namespace zel {
namespace {

// Columns worked on at a time: three planes of 16-bit lanes stay in the first-level cache.
constexpr int kChunk = 512;

using Plane = std::array<std::int16_t, kChunk>;

struct Planes {
  Plane red, green, blue;
};

// All ones in every second lane, so that one loop blends the two column phases without a branch.
constexpr auto kOddColumns = [] {
  std::array<std::int16_t, kChunk + 1> mask{};
  for (std::size_t i = 1; i < mask.size(); i += 2) mask[i] = -1;
  return mask;
}();

constexpr std::int16_t Limit(int v) {
  return static_cast<std::int16_t>(std::clamp(v, 0, 255));
}

constexpr std::int16_t Sixteenths(int sum) {
  // Every sum of the interpolation lies within -3060..7148, so 16-bit lanes hold it.
  const auto lane = static_cast<std::int16_t>(sum + 8);
  return Limit(lane >> 4);
}

constexpr std::int16_t Choose(std::int16_t mask, std::int16_t ifSet, std::int16_t ifClear) {
  return static_cast<std::int16_t>((ifSet & mask) | (ifClear & ~mask));
}

/// `p` points at the first of `count` samples. On a row, green alternates with one other colour, the row's
/// own; the third colour is the one of the rows above and below.
void InterpolateRow(const std::uint8_t* __restrict p, std::ptrdiff_t stride, int count, bool greenFirst,
                    std::int16_t* __restrict own, std::int16_t* __restrict green,
                    std::int16_t* __restrict other) {
  const std::uint8_t* __restrict n = p - stride;
  const std::uint8_t* __restrict s = p + stride;
  const std::uint8_t* __restrict nn = n - stride;
  const std::uint8_t* __restrict ss = s + stride;
  const std::int16_t* __restrict atGreen = kOddColumns.data() + (greenFirst ? 1 : 0);
  for (int i = 0; i < count; ++i) {
    const auto here = static_cast<std::int16_t>(p[i]);
    const auto beside = static_cast<std::int16_t>(p[i - 1] + p[i + 1]);
    const auto above = static_cast<std::int16_t>(n[i] + s[i]);
    const auto corners = static_cast<std::int16_t>(n[i - 1] + n[i + 1] + s[i - 1] + s[i + 1]);
    const auto farBeside = static_cast<std::int16_t>(p[i - 2] + p[i + 2]);
    const auto farAbove = static_cast<std::int16_t>(nn[i] + ss[i]);

    const auto greenHere = Sixteenths(8 * here + 4 * (beside + above) - 2 * (farBeside + farAbove));
    const auto diagonal = Sixteenths(12 * here + 4 * corners - 3 * (farBeside + farAbove));
    const auto fromBeside = Sixteenths(10 * here + 8 * beside - 2 * (corners + farBeside) + farAbove);
    const auto fromAbove = Sixteenths(10 * here + 8 * above - 2 * (corners + farAbove) + farBeside);

    own[i] = Choose(atGreen[i], fromBeside, here);
    green[i] = Choose(atGreen[i], here, greenHere);
    other[i] = Choose(atGreen[i], fromAbove, diagonal);
  }
}

void InterpolateGreen(const std::uint8_t* __restrict p, std::ptrdiff_t stride, int count, bool greenFirst,
                      std::int16_t* __restrict green) {
  const std::uint8_t* __restrict n = p - stride;
  const std::uint8_t* __restrict s = p + stride;
  const std::uint8_t* __restrict nn = n - stride;
  const std::uint8_t* __restrict ss = s + stride;
  const std::int16_t* __restrict atGreen = kOddColumns.data() + (greenFirst ? 1 : 0);
  for (int i = 0; i < count; ++i) {
    const auto here = static_cast<std::int16_t>(p[i]);
    const auto adjacent = static_cast<std::int16_t>(p[i - 1] + p[i + 1] + n[i] + s[i]);
    const auto beyond = static_cast<std::int16_t>(p[i - 2] + p[i + 2] + nn[i] + ss[i]);
    green[i] = Choose(atGreen[i], here, Sixteenths(8 * here + 4 * adjacent - 2 * beyond));
  }
}

void ApplyGain(std::int16_t* __restrict plane, int count, std::int32_t gain) {
  if (gain == 1 << PlaneGains::kShift) return;
  constexpr std::int32_t kHalf = 1 << (PlaneGains::kShift - 1);
  for (int i = 0; i < count; ++i) plane[i] = Limit((plane[i] * gain + kHalf) >> PlaneGains::kShift);
}

void ApplyMatrix(Planes& planes, int count, const FixedColorMatrix& matrix) {
  std::int16_t* __restrict red = planes.red.data();
  std::int16_t* __restrict green = planes.green.data();
  std::int16_t* __restrict blue = planes.blue.data();
  std::array<int, 12> c;
  for (int column = 0; column < 3; ++column) {
    for (int row = 0; row < 4; ++row) c[std::size_t(4 * column + row)] = matrix.c[row][column];
  }
  for (int i = 0; i < count; ++i) {
    const int r = red[i], g = green[i], b = blue[i];
    red[i] = Limit((r * c[0] + g * c[1] + b * c[2] + c[3] + 32) >> 6);
    green[i] = Limit((r * c[4] + g * c[5] + b * c[6] + c[7] + 32) >> 6);
    blue[i] = Limit((r * c[8] + g * c[9] + b * c[10] + c[11] + 32) >> 6);
  }
}

void ApplyTable(std::int16_t* __restrict plane, int count, const std::uint8_t* __restrict table) {
  for (int i = 0; i < count; ++i) plane[i] = table[plane[i]];
}

template <int kPixelBytes>
void StorePixels(const std::int16_t* __restrict red, const std::int16_t* __restrict green,
                 const std::int16_t* __restrict blue, int count, std::uint8_t* __restrict out) {
  for (int i = 0; i < count; ++i) {
    out[kPixelBytes * i] = static_cast<std::uint8_t>(blue[i]);
    out[kPixelBytes * i + 1] = static_cast<std::uint8_t>(green[i]);
    out[kPixelBytes * i + 2] = static_cast<std::uint8_t>(red[i]);
    if constexpr (kPixelBytes == 4) out[kPixelBytes * i + 3] = 255;
  }
}

void StorePixels(const Plane& red, const Plane& green, const Plane& blue, int count, int pixelBytes,
                 std::uint8_t* out) {
  const auto store = pixelBytes == 4 ? StorePixels<4> : StorePixels<3>;
  store(red.data(), green.data(), blue.data(), count, out);
}

/// Calls `chunk(samples, row phase, green first, count, pixels)` for each piece of the rows.
template <class Chunk>
void ForEachChunk(const MosaicView& mosaic, int firstRow, int endRow, int pixelBytes, std::uint8_t* out,
                  std::ptrdiff_t outStride, Chunk chunk) {
  for (int row = firstRow; row < endRow; ++row) {
    // kChunk is even: the column phase at a chunk's start is that of the row's first sample.
    const BayerPhase phase = PhaseAt(mosaic.phase, row, 0);
    for (int column = 0; column < mosaic.width; column += kChunk) {
      chunk(mosaic.samples + row * mosaic.stride + column, phase, std::min(kChunk, mosaic.width - column),
            out + row * outStride + std::ptrdiff_t{column} * pixelBytes);
    }
  }
}

constexpr bool IsGreen(BayerPhase phase) {
  return phase.row == phase.column;
}

}  // namespace

void GradientDemosaic(const MosaicView& mosaic, int firstRow, int endRow, const PixelTones& tones,
                      int pixelBytes, std::uint8_t* out, std::ptrdiff_t outStride) {
  Planes planes;
  ForEachChunk(mosaic, firstRow, endRow, pixelBytes, out, outStride,
               [&](const std::uint8_t* samples, BayerPhase phase, int count, std::uint8_t* pixels) {
                 Plane& own = phase.row ? planes.blue : planes.red;
                 Plane& other = phase.row ? planes.red : planes.blue;
                 InterpolateRow(samples, mosaic.stride, count, IsGreen(phase), own.data(),
                                planes.green.data(), other.data());
                 ApplyGain(planes.red.data(), count, tones.gains.r);
                 ApplyGain(planes.green.data(), count, tones.gains.g);
                 ApplyGain(planes.blue.data(), count, tones.gains.b);
                 if (tones.matrix) ApplyMatrix(planes, count, *tones.matrix);
                 if (tones.gamma) {
                   for (Plane* plane : {&planes.red, &planes.green, &planes.blue}) {
                     ApplyTable(plane->data(), count, tones.gamma);
                   }
                 }
                 StorePixels(planes.red, planes.green, planes.blue, count, pixelBytes, pixels);
               });
}

void GradientDemosaicGrey(const MosaicView& mosaic, int firstRow, int endRow, int pixelBytes,
                          std::uint8_t* out, std::ptrdiff_t outStride) {
  Plane green;
  ForEachChunk(mosaic, firstRow, endRow, pixelBytes, out, outStride,
               [&](const std::uint8_t* samples, BayerPhase phase, int count, std::uint8_t* pixels) {
                 InterpolateGreen(samples, mosaic.stride, count, IsGreen(phase), green.data());
                 StorePixels(green, green, green, count, pixelBytes, pixels);
               });
}

}  // namespace zel
