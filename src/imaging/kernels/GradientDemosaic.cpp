#include "imaging/kernels/GradientDemosaic.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/GradientDemosaic.cpp"
#include <hwy/foreach_target.h>

#include "imaging/kernels/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace zel {
namespace HWY_NAMESPACE {
namespace {

// Sums over the neighbourhood of a sample; each fits into 10 bits.
struct Taps {
  WordsV here;
  WordsV beside, farBeside;  // one and two columns away
  WordsV above, farAbove;    // one and two rows away, above and below
  WordsV corners;
};

struct ColumnTaps {
  Taps even, odd;
};

// The interpolated sums lie within -3060..7148, so that 16-bit lanes hold them and their rounding. They are
// limited to 0..255 when they become bytes.

HWY_INLINE WordsV Green(const Taps& t) {
  const auto crossed = hn::Add(hn::Add(hn::Add(t.here, t.here), t.beside), t.above);
  const auto far = hn::Add(t.farBeside, t.farAbove);
  // Twice the sum would be in sixteenths.
  const auto eighths = hn::Sub(hn::Add(crossed, crossed), far);
  return hn::ShiftRight<3>(hn::Add(eighths, hn::Set(Words(), 4)));
}

HWY_INLINE WordsV Diagonal(const Taps& t) {
  const auto far = hn::Add(t.farBeside, t.farAbove);
  const auto three = hn::Add(hn::Add(t.here, t.here), t.here);
  const auto quarter = hn::Sub(hn::Add(three, t.corners), far);
  const auto sum = hn::Add(hn::Add(hn::ShiftLeft<2>(quarter), far), hn::Set(Words(), 8));
  return hn::ShiftRight<4>(sum);
}

// What the two other colours at a green sample have in common, with the rounding.
HWY_INLINE WordsV AtGreen(const Taps& t) {
  const auto five = hn::Add(hn::ShiftLeft<2>(t.here), t.here);
  const auto half = hn::Add(hn::Sub(five, t.corners), hn::Set(Words(), 4));
  return hn::Add(half, half);
}

// The colour found in one direction of a green sample; `across` is what lies two away in the other direction.
HWY_INLINE WordsV Along(WordsV atGreen, WordsV near, WordsV far, WordsV across) {
  const auto half = hn::Sub(hn::ShiftLeft<2>(near), far);
  const auto sum = hn::Add(hn::Add(atGreen, across), hn::Add(half, half));
  return hn::ShiftRight<4>(sum);
}

HWY_INLINE ColumnTaps LoadTaps(const std::uint8_t* p, std::ptrdiff_t stride) {
  const auto load = [](const std::uint8_t* from) HWY_ATTR { return hn::LoadU(Bytes(), from); };
  const auto left = load(p - 2), middle = load(p), right = load(p + 2);
  const auto above = load(p - stride), below = load(p + stride);
  const auto farAbove = load(p - 2 * stride), farBelow = load(p + 2 * stride);
  const auto even = Evens(middle), odd = Odds(middle);
  const auto evenRight = Evens(right), oddLeft = Odds(left);
  const auto nearEven = hn::Add(Evens(above), Evens(below)), nearOdd = hn::Add(Odds(above), Odds(below));
  const auto nearOddLeft = hn::Add(Odds(load(p - stride - 2)), Odds(load(p + stride - 2)));
  const auto nearEvenRight = hn::Add(Evens(load(p - stride + 2)), Evens(load(p + stride + 2)));
  return {{even, hn::Add(oddLeft, odd), hn::Add(Evens(left), evenRight), nearEven,
           hn::Add(Evens(farAbove), Evens(farBelow)), hn::Add(nearOddLeft, nearOdd)},
          {odd, hn::Add(even, evenRight), hn::Add(oddLeft, Odds(right)), nearOdd,
           hn::Add(Odds(farAbove), Odds(farBelow)), hn::Add(nearEven, nearEvenRight)}};
}

/// On a row, green alternates with one other colour, the row's own; the third is that of the rows above and
/// below.
template <bool kGreenFirst>
void ColorRow(const std::uint8_t* samples, std::ptrdiff_t stride, int width, std::uint8_t* own,
              std::uint8_t* green, std::uint8_t* other) {
  const auto merge = [](WordsV atGreen, WordsV atColor) HWY_ATTR {
    return kGreenFirst ? MergeLimited(atGreen, atColor) : MergeLimited(atColor, atGreen);
  };
  for (int i = 0; i < width; i += static_cast<int>(hn::Lanes(Bytes()))) {
    const ColumnTaps taps = LoadTaps(samples + i, stride);
    const Taps& g = kGreenFirst ? taps.even : taps.odd;
    const Taps& c = kGreenFirst ? taps.odd : taps.even;
    const auto common = AtGreen(g);
    hn::StoreU(merge(Along(common, g.beside, g.farBeside, g.farAbove), c.here), Bytes(), own + i);
    hn::StoreU(merge(g.here, Green(c)), Bytes(), green + i);
    hn::StoreU(merge(Along(common, g.above, g.farAbove, g.farBeside), Diagonal(c)), Bytes(), other + i);
  }
}

template <bool kGreenFirst>
void GreyRow(const std::uint8_t* samples, std::ptrdiff_t stride, int width, std::uint8_t* green) {
  for (int i = 0; i < width; i += static_cast<int>(hn::Lanes(Bytes()))) {
    const ColumnTaps taps = LoadTaps(samples + i, stride);
    const auto merged = kGreenFirst ? MergeLimited(taps.even.here, Green(taps.odd))
                                    : MergeLimited(Green(taps.even), taps.odd.here);
    hn::StoreU(merged, Bytes(), green + i);
  }
}

void GradientRow(const std::uint8_t* samples, std::ptrdiff_t stride, int width, BayerPhase phase,
                 const PlaneRow& out) {
  const bool greenFirst = phase.row == phase.column;
  if (out.IsGrey()) {
    (greenFirst ? GreyRow<true> : GreyRow<false>)(samples, stride, width, out.green);
    return;
  }
  (greenFirst ? ColorRow<true> : ColorRow<false>)(samples, stride, width, phase.row ? out.blue : out.red,
                                                  out.green, phase.row ? out.red : out.blue);
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace zel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zel {

HWY_EXPORT(GradientRow);

void GradientRow(const std::uint8_t* samples, std::ptrdiff_t stride, int width, BayerPhase phase,
                 const PlaneRow& out) {
  HWY_DYNAMIC_DISPATCH(GradientRow)(samples, stride, width, phase, out);
}

}  // namespace zel
#endif
