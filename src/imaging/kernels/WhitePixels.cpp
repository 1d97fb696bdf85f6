#include "imaging/kernels/WhitePixels.h"

#include <algorithm>
#include <cstdlib>

#include "imaging/kernels/BayerTaps.h"

namespace zel {

namespace {

// Difference between two colours of a pixel from which on they count as different, in 8-bit units.
constexpr int kColorDifference = 30;

int Scaled(int sum, int gain, int shift) {
  return static_cast<int>(std::min<std::int64_t>((std::int64_t{sum} * gain) >> shift, 255));
}

bool IsStronglyColored(const BayerSample& sample, const ColorGains& gains) {
  // Unity gain is 2^7; the weights of red and blue sum to 2^4.
  const int red = Scaled(sample.red, gains.r, 11);
  const int green = Scaled(sample.green, gains.g, 7);
  const int blue = Scaled(sample.blue, gains.b, 11);
  const int different = (std::abs(red - green) > kColorDifference) +
                        (std::abs(red - blue) > kColorDifference) +
                        (std::abs(green - blue) > kColorDifference);
  return different >= 2;
}

}  // namespace

void CancelWhitePixels(std::uint8_t* frame, std::size_t frameSize, std::ptrdiff_t fullWidth, int height,
                       int threshold, int bayerMode, const ColorGains& gains) {
  const auto size = static_cast<std::ptrdiff_t>(frameSize);
  const std::ptrdiff_t below = 2 * std::ptrdiff_t{height};
  // Everything before a pixel exists; this is how far after it samples are read: for its mean, for its
  // colour.
  const std::ptrdiff_t meanReach = std::max<std::ptrdiff_t>(below, 2);
  const std::ptrdiff_t colorReach = fullWidth + 1;
  const BayerPhase origin = PhaseOfMode(bayerMode);

  for (int row = 2; row < height - 2; ++row) {
    const std::ptrdiff_t start = row * fullWidth;
    const std::ptrdiff_t end = std::min(start + fullWidth - 2, size - meanReach);
    for (std::ptrdiff_t at = start + 2; at < end; ++at) {
      std::uint8_t* p = frame + at;
      const int mean = (p[-2] + p[2] + p[-2 * fullWidth] + p[below]) >> 2;
      if (*p - mean < threshold || at + colorReach >= size) continue;
      const BayerPhase phase = PhaseAt(origin, row, static_cast<int>(at - start));
      if (IsStronglyColored(DirectColorAt(p, fullWidth, phase.row, phase.column), gains)) {
        *p = static_cast<std::uint8_t>(mean);
      }
    }
  }
}

}  // namespace zel
