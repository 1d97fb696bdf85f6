#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "imaging/ColorGains.h"
#include "imaging/ColorMatrix.h"

/// Slow whole-frame forms of the conversions, straight from their formulas.
namespace zel::reference {

using Bytes = std::vector<std::uint8_t>;

inline std::uint8_t Byte(double v) {
  v = std::floor(v + 0.5);
  return static_cast<std::uint8_t>(v < 0 ? 0 : v > 255 ? 255 : v);
}

inline Bytes RandomBytes(std::size_t size, unsigned seed) {
  std::mt19937 random(seed);
  Bytes bytes(size);
  for (auto& b : bytes) b = static_cast<std::uint8_t>(random());
  return bytes;
}

/// Compares pixels of 3 or 4 bytes with the expected blue, green, red (and a fourth byte of 255); tells the
/// first difference.
inline testing::AssertionResult SamePicture(const std::uint8_t* pixels, int pixelBytes, const Bytes& expected,
                                            int width, int height, int phase) {
  for (int i = 0; i < width * height; ++i) {
    for (int c = 0; c < pixelBytes; ++c) {
      const int want = c == 3 ? 255 : expected[static_cast<std::size_t>(3 * i + c)];
      const int got = pixels[i * pixelBytes + c];
      if (got == want) continue;
      return testing::AssertionFailure()
             << width << " x " << height << ", phase " << phase << ", row " << i / width << ", column "
             << i % width << ", byte " << c << ": " << got << " instead of " << want;
    }
  }
  return testing::AssertionSuccess();
}

/// The colour letter of a sample; each mode names the four corners of its first 2 x 2 cell, row by row.
inline char ColorAt(int mode, int row, int column) {
  static constexpr const char* kCells[4] = {"GRBG", "BGGR", "RGGB", "GBRG"};
  return kCells[mode][(row & 1) * 2 + (column & 1)];
}

/// A mosaic with its margin of two; margins of small frames are black.
class Padded {
 public:
  Padded(const Bytes& frame, int pitch, int width, int height)
      : width_(width), samples_(static_cast<std::size_t>((width + 4) * (height + 4))) {
    for (int row = 0; row < height; ++row)
      for (int column = 0; column < width; ++column)
        At(row, column) = frame[static_cast<std::size_t>(row * pitch + column)];
    if (width < 8 || height < 8) return;
    const int rows[6][2] = {{-2, 4}, {-1, 3}, {0, 4}, {1, 3}, {height, height - 4}, {height + 1, height - 3}};
    for (const auto& [to, from] : rows)
      for (int column = 0; column < width; ++column) At(to, column) = At(from, column);
    const int columns[4][2] = {{-1, 1}, {-2, 2}, {width, width - 2}, {width + 1, width - 3}};
    for (int row = -2; row < height + 2; ++row)
      for (const auto& [to, from] : columns) At(row, to) = At(row, from);
  }

  std::uint8_t& At(int row, int column) {
    return samples_[static_cast<std::size_t>((row + 2) * (width_ + 4) + column + 2)];
  }

 private:
  int width_;
  Bytes samples_;
};

/// The four 5 x 5 filters of gradient-corrected interpolation, in sixteenths.
using Filter = std::array<std::array<int, 5>, 5>;
inline constexpr Filter kGreen{
    {{0, 0, -2, 0, 0}, {0, 0, 4, 0, 0}, {-2, 4, 8, 4, -2}, {0, 0, 4, 0, 0}, {0, 0, -2, 0, 0}}};
inline constexpr Filter kInRow{
    {{0, 0, 1, 0, 0}, {0, -2, 0, -2, 0}, {-2, 8, 10, 8, -2}, {0, -2, 0, -2, 0}, {0, 0, 1, 0, 0}}};
inline constexpr Filter kInColumn{
    {{0, 0, -2, 0, 0}, {0, -2, 8, -2, 0}, {1, 0, 10, 0, 1}, {0, -2, 8, -2, 0}, {0, 0, -2, 0, 0}}};
inline constexpr Filter kDiagonal{
    {{0, 0, -3, 0, 0}, {0, 4, 0, 4, 0}, {-3, 0, 12, 0, -3}, {0, 4, 0, 4, 0}, {0, 0, -3, 0, 0}}};

inline std::uint8_t Interpolate(Padded& mosaic, int mode, int row, int column, char color) {
  if (ColorAt(mode, row, column) == color) return mosaic.At(row, column);
  const bool beside = ColorAt(mode, row, column + 1) == color;
  const bool above = ColorAt(mode, row + 1, column) == color;
  const Filter& filter = color == 'G' ? kGreen : beside ? kInRow : above ? kInColumn : kDiagonal;
  int sum = 0;
  for (int r = 0; r < 5; ++r)
    for (int c = 0; c < 5; ++c)
      if (const int weight = filter[std::size_t(r)][std::size_t(c)])
        sum += weight * mosaic.At(row + r - 2, column + c - 2);
  return Byte(sum / 16.0);
}

/// What gains (as factors), matrix and table make of blue, green, red.
inline Bytes Toned(const Bytes& colors, std::array<double, 3> gains, const FixedColorMatrix* matrix,
                   const std::uint8_t* gamma) {
  Bytes out;
  for (std::size_t at = 0; at < colors.size(); at += 3) {
    std::array<double, 4> in{0, 0, 0, 1};
    for (std::size_t i = 0; i < 3; ++i) in[i] = Byte(colors[at + 2 - i] * gains[i]);
    for (const std::size_t i : {2u, 1u, 0u}) {
      double v = in[i];
      if (matrix) {
        v = 0;
        for (std::size_t k = 0; k < 4; ++k) v += in[k] * matrix->c[k][i] / 64.0;
      }
      out.push_back(gamma ? gamma[Byte(v)] : Byte(v));
    }
  }
  return out;
}

/// Blue, green, red by table-driven demosaicing, gains as factors.
inline Bytes Gradient(Padded& mosaic, int width, int height, int mode, std::array<double, 3> gains,
                      const FixedColorMatrix* matrix, const std::uint8_t* gamma) {
  Bytes colors;
  for (int row = 0; row < height; ++row)
    for (int column = 0; column < width; ++column)
      for (const char color : {'B', 'G', 'R'})
        colors.push_back(Interpolate(mosaic, mode, row, column, color));
  return Toned(colors, gains, matrix, gamma);
}

inline Bytes GradientGrey(Padded& mosaic, int width, int height, int mode) {
  Bytes out;
  for (int row = 0; row < height; ++row)
    for (int column = 0; column < width; ++column)
      out.insert(out.end(), 3, Interpolate(mosaic, mode, row, column, 'G'));
  return out;
}

/// Blue, green, red by the direct kernels; every entry 99 where the picture is too small.
inline Bytes Direct(const Bytes& frame, int pitch, int width, int height, int mode, const ColorGains& gains,
                    bool grey) {
  Bytes out(static_cast<std::size_t>(3 * width * height), 99);
  if (width < 5 || height < 5) return out;
  for (int row = 0; row < height; ++row) {
    for (int column = 0; column < width; ++column) {
      const int r = std::min(std::max(row, 2), height - 3), c = std::min(std::max(column, 2), width - 3);
      // Offsets from the sample, and the weights that the four nearest of a colour have by their distance to
      // the point half a sample up and left of it.
      const auto at = [&](int dr, int dc) { return int{frame[std::size_t((r + dr) * pitch + c + dc)]}; };
      int sum[3] = {};
      for (int dr = -2; dr <= 1; ++dr) {
        for (int dc = -2; dc <= 1; ++dc) {
          const int weight = (dr == -1 || dr == 0 ? 3 : 1) * (dc == -1 || dc == 0 ? 3 : 1);
          const char color = ColorAt(mode, r + dr, c + dc);
          if (color != 'G') sum[color == 'R' ? 2 : 0] += weight * at(dr, dc);
          if (color == 'G' && weight == 9) sum[1] += at(dr, dc);
        }
      }
      const auto scaled = [](std::int64_t v, int gain, int shift) {
        return static_cast<int>(std::min<std::int64_t>((v * gain) >> shift, 255));
      };
      const int blue = scaled(sum[0], gains.b, 11), red = scaled(sum[2], gains.r, 11);
      const int green = grey ? sum[1] >> 1 : scaled(sum[1] >> 1, gains.g, 7);
      const int values[3] = {grey ? green : blue, green, grey ? green : red};
      for (int i = 0; i < 3; ++i)
        out[std::size_t((row * width + column) * 3 + i)] = static_cast<std::uint8_t>(values[i]);
    }
  }
  return out;
}

}  // namespace zel::reference
