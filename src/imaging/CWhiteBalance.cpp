#include "imaging/CWhiteBalance.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>

#include "imaging/kernels/BayerTaps.h"
#include "imaging/kernels/ColorStatistics.h"
#include "imaging/kernels/NearlyWhite.h"

namespace zel {

namespace {

constexpr double kUnityGain = 128;

struct Rgb {
  double r = 0, g = 0, b = 0;
};

// A gain that a LONG can hold, to nearest, ties upward; nothing for the quotient of a dark channel.
std::optional<LONG> RoundedGain(double gain) {
  const double rounded = std::floor(gain + 0.5);
  if (!(std::abs(rounded) <= std::numeric_limits<LONG>::max())) return std::nullopt;
  return static_cast<LONG>(rounded);
}

// Makes red and blue as strong as green. A channel without light leaves all gains.
void Balance(const Rgb& mean, LONG* r, LONG* g, LONG* b) {
  if (mean.r <= 0 || mean.g <= 0 || mean.b <= 0) return;
  const auto red = RoundedGain(kUnityGain * mean.g / mean.r);
  const auto blue = RoundedGain(kUnityGain * mean.g / mean.b);
  if (!red || !blue) return;
  *r = *red;
  *g = static_cast<LONG>(kUnityGain);
  *b = *blue;
}

// Mean of each colour over a whole mosaic; 0 for a colour that has no samples.
Rgb MeanColor(const MosaicSums& sums, LONG width, LONG height, LONG bayerMode) {
  Rgb total, count;
  for (int row = 0; row < 2; ++row) {
    for (int column = 0; column < 2; ++column) {
      const BayerPhase phase = PhaseAt(PhaseOfMode(bayerMode), row, column);
      const auto channel = phase.row == phase.column ? &Rgb::g : phase.row ? &Rgb::b : &Rgb::r;
      total.*channel += static_cast<double>(sums.at[row][column]);
      const std::int64_t rows = (height + 1 - row) / 2, columns = (width + 1 - column) / 2;
      count.*channel += static_cast<double>(rows * columns);
    }
  }
  const auto mean = [](double all, double samples) { return samples > 0 ? all / samples : 0; };
  return {mean(total.r, count.r), mean(total.g, count.g), mean(total.b, count.b)};
}

constexpr double kToRgb[3][3] = {
    {3.2406, -1.5372, -0.4986}, {-0.9689, 1.8758, 0.0415}, {0.0557, -0.2040, 1.0570}};

// sRGB (D65) to XYZ: the exact inverse of `kToRgb` instead of its own rounded form, so that grey comes back
// as grey.
constexpr std::array<std::array<double, 3>, 3> InverseOfToRgb() {
  std::array<std::array<double, 3>, 3> inverse{};
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      const int r1 = (column + 1) % 3, r2 = (column + 2) % 3, c1 = (row + 1) % 3, c2 = (row + 2) % 3;
      inverse[row][column] = kToRgb[r1][c1] * kToRgb[r2][c2] - kToRgb[r1][c2] * kToRgb[r2][c1];
    }
  }
  const double determinant =
      kToRgb[0][0] * inverse[0][0] + kToRgb[0][1] * inverse[1][0] + kToRgb[0][2] * inverse[2][0];
  for (auto& row : inverse) {
    for (double& value : row) value /= determinant;
  }
  return inverse;
}
constexpr auto kToXyz = InverseOfToRgb();

// The sRGB transfer curve: of samples to light, as the statistics take it, and of light in 1/255 to bytes.
struct TransferTables {
  std::array<std::uint16_t, 256> linear;
  std::array<std::uint8_t, 256> encoded;

  TransferTables() {
    for (std::size_t i = 0; i < 256; ++i) {
      const double c = static_cast<double>(i) / 255;
      const double light = c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
      linear[i] = static_cast<std::uint16_t>(kFullLight * light + 0.5);
      const double v = 255 * (c <= 0.00304 ? 12.92 * c : 1.055 * std::pow(c, 1 / 2.4) - 0.055);
      encoded[i] = static_cast<std::uint8_t>(std::clamp(v, 0.0, 255.0) + 0.5);
    }
  }
};

const TransferTables& Transfer() {
  static const TransferTables tables;
  return tables;
}

double Encoded(double light) {
  return Transfer().encoded[static_cast<std::size_t>(255 * std::clamp(light, 0.0, 1.0) + 0.5)];
}

ColorSpace SpaceOfTheStatistics() {
  ColorSpace space{Transfer().linear.data(), {}};
  for (std::size_t row = 0; row < 3; ++row) {
    for (std::size_t column = 0; column < 3; ++column) {
      space.weights[row][column] =
          static_cast<std::int16_t>(std::floor(kUnitWeight * kToXyz[row][column] + 0.5));
    }
  }
  return space;
}

}  // namespace

bool CWhiteBalance::Allocate(LONG width, LONG height) {
  width_ = width;
  height_ = height;
  return width >= 2 && height >= 2;
}

void CWhiteBalance::ComputeGains(LONG modeIndex, const unsigned char* workImage, LONG workStride,
                                 LONG bayerMode, LONG width, LONG height, LONG* r, LONG* g, LONG* b) {
  const bool hasCells = width >= 2 && height >= 2 && width == width_ && height == height_;
  if (modeIndex == 0 || !hasCells) {
    GreyWorldGains(SumMosaic(workImage, workStride, width, height), bayerMode, width, height, r, g, b);
    return;
  }

  constexpr double kDarkest = 0.05;  // of full light
  constexpr double kOutlier = 3;     // times the mean
  constexpr int kRounds = 5;

  const ColorSpace space = SpaceOfTheStatistics();
  const CellGrid grid{workImage, workStride, width / 2, (height / 2 + 1) / 2, PhaseOfMode(bayerMode)};
  // Outliers stay out once they are: the limits never rise.
  CellLimits limits;
  limits.darkestY = static_cast<std::int32_t>(std::ceil(kDarkest * kFullLight));
  std::array<double, 3> mean{};  // X, Y, Z
  CellSums sums;
  for (int round = 0; round < kRounds; ++round) {
    sums = SumCells(grid, space, limits);
    std::array<double, 3> next{};
    for (std::size_t i = 0; i < 3; ++i) {
      // One more than the count: a single cell is never its own mean, and none is no division by zero.
      for (std::size_t k = 0; k < 3; ++k) {
        next[i] += kToXyz[i][k] * static_cast<double>(sums.light[k]) / (static_cast<double>(sums.count) + 1);
      }
    }
    if (round > 0 && next == mean) break;
    mean = next;
    for (std::size_t i = 0; i < 3; ++i) {
      limits.brightest[i] = std::min(limits.brightest[i], static_cast<std::int32_t>(kOutlier * mean[i]));
    }
  }
  if (sums.count == 0) return;
  // The mean's way back from X, Y, Z undoes the way there.
  const auto encoded = [&](std::uint64_t light) {
    return Encoded(static_cast<double>(light) / (static_cast<double>(sums.count) + 1) / kFullLight);
  };
  Balance({encoded(sums.light[0]), encoded(sums.light[1]), encoded(sums.light[2])}, r, g, b);
}

void CWhiteBalance::GreyWorldGains(const MosaicSums& sums, LONG bayerMode, LONG width, LONG height, LONG* r,
                                   LONG* g, LONG* b) {
  Balance(MeanColor(sums, width, height, bayerMode), r, g, b);
}

void GreyWorldGains24(const unsigned char* frame, LONG sourceWidth, LONG height, LONG bayerMode, LONG* r,
                      LONG* g, LONG* b) {
  CWhiteBalance::GreyWorldGains(SumMosaic(frame, sourceWidth, sourceWidth, height), bayerMode, sourceWidth,
                                height, r, g, b);
}

void WhitePointGains24(const unsigned char* frame, LONG sourceWidth, LONG width, LONG height, LONG bayerMode,
                       LONG* r, LONG* g, LONG* b) {
  *r = 128;
  *g = 100;
  *b = 128;
  WhiteSums white;
  for (LONG row = 2; row < height - 2; ++row) {
    AddNearlyWhite(frame + 2 * std::ptrdiff_t{row} * sourceWidth, sourceWidth, width,
                   PhaseAt(PhaseOfMode(bayerMode), row, 0), white);
  }
  if (white.count == 0) return;
  const auto mean = [&](std::uint64_t sum) {
    return static_cast<double>(sum) / static_cast<double>(white.count);
  };
  const double red = mean(white.red), green = mean(white.green), blue = mean(white.blue);
  const double y = 0.299 * red + 0.587 * green + 0.114 * blue;
  const double cb = -0.1687 * red - 0.3313 * green + 0.5 * blue;
  const double cr = 0.5 * red - 0.4187 * green - 0.0813 * blue;

  // Red and blue factors for which the mean colour has Cb = Cr = 0: two linear equations.
  const double cbOfRed = -0.1687 * y - 0.2365 * cr;
  const double cbOfBlue = 0.5 * y + 0.866 * cb;
  const double crOfRed = 0.5 * y + 0.701 * cr;
  const double crOfBlue = -0.0813 * y - 0.1441 * cb;
  const double cbOfGreen = 0.3313 * y - 0.114 * cb - 0.2366 * cr;
  const double crOfGreen = 0.4187 * y - 0.1441 * cb - 0.299 * cr;
  const double determinant = cbOfRed * crOfBlue - cbOfBlue * crOfRed;
  const auto redGain = RoundedGain(kUnityGain * (crOfBlue * cbOfGreen - cbOfBlue * crOfGreen) / determinant);
  const auto blueGain = RoundedGain(kUnityGain * (crOfRed * cbOfGreen - cbOfRed * crOfGreen) / -determinant);
  if (!redGain || !blueGain) return;
  *r = *redGain;
  *g = static_cast<LONG>(kUnityGain);
  *b = *blueGain;
}

}  // namespace zel
