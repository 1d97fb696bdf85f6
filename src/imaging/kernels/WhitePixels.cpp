#include "imaging/kernels/WhitePixels.h"

#include <algorithm>
#include <cstdlib>

#include "imaging/kernels/BayerTaps.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/WhitePixels.cpp"
#include <hwy/foreach_target.h>

#include "imaging/kernels/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace zel {
namespace HWY_NAMESPACE {
namespace {

// Difference between two colours of a pixel from which on they count as different, in 8-bit units.
constexpr int kColorDifference = 30;

int Scaled(int sum, int gain, int shift) {
  // Like the direct kernel: a gain below 0 counts as 0.
  return static_cast<int>(std::clamp<std::int64_t>((std::int64_t{sum} * gain) >> shift, 0, 255));
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

/// The first of the samples at..end-1 that is at the start of a vector with a bright one, or of the rest that
/// fills none. A vector without any stays as it is, so that none of its samples has a changed neighbour in
/// it.
HWY_INLINE std::ptrdiff_t SkipDark(const std::uint8_t* frame, std::ptrdiff_t at, std::ptrdiff_t end,
                                   std::ptrdiff_t above, std::ptrdiff_t below, int threshold) {
  const auto step = static_cast<std::ptrdiff_t>(hn::Lanes(Bytes()));
  const auto limit = hn::Set(Bytes(), static_cast<std::uint8_t>(threshold));
  for (; at + step <= end; at += step) {
    const std::uint8_t* p = frame + at;
    const auto mean = MeanOfFour(hn::LoadU(Bytes(), p - 2), hn::LoadU(Bytes(), p + 2),
                                 hn::LoadU(Bytes(), p - above), hn::LoadU(Bytes(), p + below));
    const auto brighter = hn::SaturatedSub(hn::LoadU(Bytes(), p), mean);
    if (!hn::AllFalse(Bytes(), hn::Eq(hn::Max(brighter, limit), brighter))) break;
  }
  return at;
}

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
    std::ptrdiff_t checkAt = start + 2;  // where the next vector may be skipped
    for (std::ptrdiff_t at = start + 2; at < end; ++at) {
      if (at == checkAt) {
        at = SkipDark(frame, at, end, 2 * fullWidth, below, threshold);
        if (at >= end) break;
        checkAt = at + static_cast<std::ptrdiff_t>(hn::Lanes(Bytes()));
      }
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

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace zel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zel {

HWY_EXPORT(CancelWhitePixels);

void CancelWhitePixels(std::uint8_t* frame, std::size_t frameSize, std::ptrdiff_t fullWidth, int height,
                       int threshold, int bayerMode, const ColorGains& gains) {
  HWY_DYNAMIC_DISPATCH(CancelWhitePixels)
  (frame, frameSize, fullWidth, height, threshold, bayerMode, gains);
}

}  // namespace zel
#endif
