#include "imaging/CWhiteBalance.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <new>
#include <optional>

#include "imaging/kernels/BayerTaps.h"
#include "imaging/kernels/MosaicSums.h"

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
Rgb MeanColor(const std::uint8_t* frame, std::ptrdiff_t stride, LONG width, LONG height, LONG bayerMode) {
  const MosaicSums sums = SumMosaic(frame, stride, width, height);
  Rgb total, count;
  for (int row = 0; row < 2; ++row) {
    for (int column = 0; column < 2; ++column) {
      const BayerPhase phase = PhaseAt(PhaseOfMode(bayerMode), row, column);
      const auto channel = phase.row == phase.column ? &Rgb::g : phase.row ? &Rgb::b : &Rgb::r;
      total.*channel += static_cast<double>(sums.at[row][column]);
      count.*channel += ((height + 1 - row) / 2) * static_cast<double>((width + 1 - column) / 2);
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

// The sRGB transfer curve. Linear light is looked up in halves of an 8-bit step, as a cell's green is the
// mean of two.
struct TransferTables {
  std::array<double, 511> linear;
  std::array<std::uint8_t, 256> encoded;

  TransferTables() {
    for (std::size_t i = 0; i < linear.size(); ++i) {
      const double c = static_cast<double>(i) / 510;
      linear[i] = c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    }
    for (std::size_t i = 0; i < encoded.size(); ++i) {
      const double c = static_cast<double>(i) / 255;
      const double v = 255 * (c <= 0.00304 ? 12.92 * c : 1.055 * std::pow(c, 1 / 2.4) - 0.055);
      encoded[i] = static_cast<std::uint8_t>(std::clamp(v, 0.0, 255.0) + 0.5);
    }
  }
};

const TransferTables& Transfer() {
  static const TransferTables tables;
  return tables;
}

double Encoded(double linear) {
  return Transfer().encoded[static_cast<std::size_t>(255 * std::clamp(linear, 0.0, 1.0) + 0.5)];
}

}  // namespace

bool CWhiteBalance::Allocate(LONG width, LONG height) {
  if (width == width_ && height == height_) return !cells_.empty();
  width_ = width;
  height_ = height;
  const auto columns = static_cast<std::size_t>(std::max<LONG>(width, 0) / 2);
  const auto rows = static_cast<std::size_t>((std::max<LONG>(height, 0) / 2 + 1) / 2);
  try {
    cells_.resize(columns * rows);
    valid_.resize(columns * rows);
  } catch (const std::bad_alloc&) {
    cells_.clear();
  }
  return !cells_.empty();
}

void CWhiteBalance::FillCells(const unsigned char* workImage, LONG workStride, LONG bayerMode) {
  const TransferTables& transfer = Transfer();
  // Where red lies in the cell; blue lies opposite, the greens in the other two corners.
  const BayerPhase origin = PhaseOfMode(bayerMode);
  const std::ptrdiff_t stride = workStride;
  const std::ptrdiff_t redRow = origin.row ? 1 : 0, redColumn = origin.column ? 0 : 1;
  const std::ptrdiff_t red = redRow * stride + redColumn;
  const std::ptrdiff_t blue = (1 - redRow) * stride + (1 - redColumn);
  const std::ptrdiff_t green1 = redRow * stride + (1 - redColumn);
  const std::ptrdiff_t green2 = (1 - redRow) * stride + redColumn;

  const std::size_t columns = static_cast<std::size_t>(width_) / 2;
  for (std::size_t i = 0; i < cells_.size(); ++i) {
    const auto row = static_cast<std::ptrdiff_t>(i / columns),
               column = static_cast<std::ptrdiff_t>(i % columns);
    const unsigned char* p = workImage + row * 4 * stride + column * 2;
    const double r = transfer.linear[2u * p[red]];
    const double g = transfer.linear[std::size_t{p[green1]} + p[green2]];
    const double b = transfer.linear[2u * p[blue]];
    const auto mix = [&](const std::array<double, 3>& weights) {
      return static_cast<float>(weights[0] * r + weights[1] * g + weights[2] * b);
    };
    cells_[i] = {mix(kToXyz[0]), mix(kToXyz[1]), mix(kToXyz[2])};
    valid_[i] = 1;
  }
}

void CWhiteBalance::ComputeGains(LONG modeIndex, const unsigned char* workImage, LONG workStride,
                                 LONG bayerMode, LONG width, LONG height, LONG* r, LONG* g, LONG* b) {
  if (modeIndex == 0 || cells_.empty() || width != width_ || height != height_) {
    Balance(MeanColor(workImage, workStride, width, height, bayerMode), r, g, b);
    return;
  }

  constexpr float kDarkest = 0.05f;
  constexpr double kOutlier = 3;  // times the mean
  constexpr int kRounds = 5;

  FillCells(workImage, workStride, bayerMode);
  for (std::size_t i = 0; i < cells_.size(); ++i) {
    if (cells_[i].y < kDarkest) valid_[i] = 0;
  }
  double x = 0, y = 0, z = 0;
  std::size_t count = 0;
  for (int round = 0; round < kRounds; ++round) {
    double sumX = 0, sumY = 0, sumZ = 0;
    count = 0;
    for (std::size_t i = 0; i < cells_.size(); ++i) {
      if (!valid_[i]) continue;
      sumX += cells_[i].x;
      sumY += cells_[i].y;
      sumZ += cells_[i].z;
      ++count;
    }
    // One more than the count: a single cell is never its own mean, and none is no division by zero.
    const double divisor = static_cast<double>(count) + 1;
    const bool settled = round > 0 && x == sumX / divisor && y == sumY / divisor && z == sumZ / divisor;
    x = sumX / divisor;
    y = sumY / divisor;
    z = sumZ / divisor;
    if (settled) break;
    for (std::size_t i = 0; i < cells_.size(); ++i) {
      const Xyz& cell = cells_[i];
      if (cell.x > kOutlier * x || cell.y > kOutlier * y || cell.z > kOutlier * z) valid_[i] = 0;
    }
  }
  if (count == 0) return;
  const auto encoded = [&](const double(&row)[3]) { return Encoded(row[0] * x + row[1] * y + row[2] * z); };
  Balance({encoded(kToRgb[0]), encoded(kToRgb[1]), encoded(kToRgb[2])}, r, g, b);
}

void GreyWorldGains24(const unsigned char* frame, LONG sourceWidth, LONG height, LONG bayerMode, LONG* r,
                      LONG* g, LONG* b) {
  Balance(MeanColor(frame, sourceWidth, sourceWidth, height, bayerMode), r, g, b);
}

void WhitePointGains24(const unsigned char* frame, LONG sourceWidth, LONG width, LONG height, LONG bayerMode,
                       LONG* r, LONG* g, LONG* b) {
  *r = 128;
  *g = 100;
  *b = 128;
  constexpr double kNearlyWhite = 200.5;
  double sumY = 0, sumCb = 0, sumCr = 0, count = 0;
  const BayerPhase origin = PhaseOfMode(bayerMode);
  for (LONG row = 2; row < height - 2; ++row) {
    const unsigned char* line = frame + static_cast<std::ptrdiff_t>(row) * sourceWidth;
    for (LONG column = 2; column < width - 2; ++column) {
      const BayerPhase phase = PhaseAt(origin, row, column);
      const BayerSample sample = DirectColorAt(line + column, sourceWidth, phase.row, phase.column);
      const int red = sample.red >> 4, green = sample.green, blue = sample.blue >> 4;
      const double y = 0.299 * red + 0.587 * green + 0.114 * blue;
      const double cb = -0.1687 * red - 0.3313 * green + 0.5 * blue;
      const double cr = 0.5 * red - 0.4187 * green - 0.0813 * blue;
      if (y - std::abs(cb) - std::abs(cr) <= kNearlyWhite) continue;
      sumY += y;
      sumCb += cb;
      sumCr += cr;
      count += 1;
    }
  }
  if (count == 0) return;
  const double y = sumY / count, cb = sumCb / count, cr = sumCr / count;

  // Red and blue factors for which the mean colour has Cb = Cr = 0: two linear equations.
  const double cbOfRed = -0.1687 * y - 0.2365 * cr;
  const double cbOfBlue = 0.5 * y + 0.866 * cb;
  const double crOfRed = 0.5 * y + 0.701 * cr;
  const double crOfBlue = -0.0813 * y - 0.1441 * cb;
  const double cbOfGreen = 0.3313 * y - 0.114 * cb - 0.2366 * cr;
  const double crOfGreen = 0.4187 * y - 0.1441 * cb - 0.299 * cr;
  const double determinant = cbOfRed * crOfBlue - cbOfBlue * crOfRed;
  const auto red = RoundedGain(kUnityGain * (crOfBlue * cbOfGreen - cbOfBlue * crOfGreen) / determinant);
  const auto blue = RoundedGain(kUnityGain * (crOfRed * cbOfGreen - cbOfRed * crOfGreen) / -determinant);
  if (!red || !blue) return;
  *r = *red;
  *g = static_cast<LONG>(kUnityGain);
  *b = *blue;
}

}  // namespace zel
