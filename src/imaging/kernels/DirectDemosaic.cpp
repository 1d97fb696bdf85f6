#include "imaging/kernels/DirectDemosaic.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/DirectDemosaic.cpp"
#include <hwy/foreach_target.h>

#include "imaging/kernels/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace zel {
namespace HWY_NAMESPACE {
namespace {

// With this gain one sixteenth of a sample step is already white.
constexpr int kMaxGain = (1 << 19) - 1;

/// A gain in 1/2^kShift, split into a whole factor and a rest so that both products fit into 16 bits: from a
/// whole factor of 1 on, sums above 255 are white whatever the rest is.
template <int kShift>
struct Gain {
  explicit Gain(int gain) {
    const int g = std::clamp(gain, 0, kMaxGain);
    whole = hn::Set(UnsignedWords(), static_cast<std::uint16_t>(std::min(g >> kShift, 256)));
    rest = hn::Set(UnsignedWords(), static_cast<std::uint16_t>((g & ((1 << kShift) - 1)) << (12 - kShift)));
  }
  /// `sum` up to 4080.
  HWY_INLINE WordsV Apply(WordsV sum) const {
    const auto v = hn::BitCast(UnsignedWords(), sum), white = hn::Set(UnsignedWords(), 255);
    const auto fraction = hn::MulHigh(hn::ShiftLeft<4>(v), rest);
    const auto product = hn::SaturatedAdd(hn::Mul(hn::Min(v, white), whole), fraction);
    return hn::BitCast(Words(), hn::Min(product, white));
  }
  UnsignedWordsV whole, rest;
};

/// Sums of the four samples of each colour around a point, the nearest weighing 9, then 3, 3 and 1.
struct Sums {
  WordsV green;
  WordsV own, other;  // the row's own colour besides green, and the one of the rows beside
};

HWY_INLINE WordsV Weigh(WordsV nearest, WordsV second, WordsV third, WordsV last) {
  const auto three = hn::Add(hn::Add(nearest, second), hn::Add(nearest, third));
  // 9a + 3b + 3c + d = 3(2a + b + c) + 3a + d
  const auto rest = hn::Add(hn::Add(nearest, nearest), hn::Add(nearest, last));
  return hn::Add(hn::Add(hn::Add(three, three), three), rest);
}

HWY_INLINE WordsV Mean(WordsV a, WordsV b) {
  return hn::ShiftRight<1>(hn::Add(a, b));
}

/// Samples of one row at the columns before, at and after a lane's own, for one column parity.
struct Beside {
  WordsV farLeft, left, here, right;
};

struct RowTaps {
  Beside even, odd;
};

HWY_INLINE RowTaps LoadTaps(const std::uint8_t* p) {
  const auto before = hn::LoadU(Bytes(), p - 2), at = hn::LoadU(Bytes(), p),
             after = hn::LoadU(Bytes(), p + 2);
  const auto even = Evens(at), odd = Odds(at), oddLeft = Odds(before);
  return {{Evens(before), oddLeft, even, odd}, {oddLeft, even, odd, Evens(after)}};
}

struct Neighbourhood {
  Beside farAbove, above, here, below;
};

HWY_INLINE Sums AtGreen(const Neighbourhood& n) {
  return {Mean(n.above.left, n.here.here),
          Weigh(n.here.left, n.farAbove.left, n.here.right, n.farAbove.right),
          Weigh(n.above.here, n.above.farLeft, n.below.here, n.below.farLeft)};
}

HWY_INLINE Sums AtColor(const Neighbourhood& n) {
  return {Mean(n.above.here, n.here.left),
          Weigh(n.here.here, n.farAbove.here, n.here.farLeft, n.farAbove.farLeft),
          Weigh(n.above.left, n.above.right, n.below.left, n.below.right)};
}

template <bool kGreenFirst>
void ColorRow(const MosaicRows& rows, int width, const Gain<11>& ownGain, const Gain<7>& greenGain,
              const Gain<11>& otherGain, std::uint8_t* own, std::uint8_t* green, std::uint8_t* other) {
  for (int i = 0; i < width; i += static_cast<int>(hn::Lanes(Bytes()))) {
    const RowTaps a = LoadTaps(rows.farAbove + i), b = LoadTaps(rows.above + i), c = LoadTaps(rows.here + i),
                  d = LoadTaps(rows.below + i);
    const Neighbourhood evens{a.even, b.even, c.even, d.even}, odds{a.odd, b.odd, c.odd, d.odd};
    const Sums even = kGreenFirst ? AtGreen(evens) : AtColor(evens);
    const Sums odd = kGreenFirst ? AtColor(odds) : AtGreen(odds);
    hn::StoreU(Merge(ownGain.Apply(even.own), ownGain.Apply(odd.own)), Bytes(), own + i);
    hn::StoreU(Merge(greenGain.Apply(even.green), greenGain.Apply(odd.green)), Bytes(), green + i);
    hn::StoreU(Merge(otherGain.Apply(even.other), otherGain.Apply(odd.other)), Bytes(), other + i);
  }
}

template <bool kGreenFirst>
void GreyRow(const MosaicRows& rows, int width, std::uint8_t* green) {
  for (int i = 0; i < width; i += static_cast<int>(hn::Lanes(Bytes()))) {
    const RowTaps b = LoadTaps(rows.above + i), c = LoadTaps(rows.here + i);
    const auto even = kGreenFirst ? Mean(b.even.left, c.even.here) : Mean(b.even.here, c.even.left);
    const auto odd = kGreenFirst ? Mean(b.odd.here, c.odd.left) : Mean(b.odd.left, c.odd.here);
    hn::StoreU(Merge(even, odd), Bytes(), green + i);
  }
}

void DirectRow(const MosaicRows& rows, int width, BayerPhase phase, const ColorGains& gains,
               const PlaneRow& out) {
  const bool greenFirst = phase.row == phase.column;
  if (out.IsGrey()) {
    (greenFirst ? GreyRow<true> : GreyRow<false>)(rows, width, out.green);
    return;
  }
  const Gain<11> red(gains.r), blue(gains.b);
  const Gain<7> green(gains.g);
  const auto row = greenFirst ? ColorRow<true> : ColorRow<false>;
  if (phase.row) {
    row(rows, width, blue, green, red, out.blue, out.green, out.red);
  } else {
    row(rows, width, red, green, blue, out.red, out.green, out.blue);
  }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace zel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zel {

HWY_EXPORT(DirectRow);

void DirectRow(const MosaicRows& rows, int width, BayerPhase phase, const ColorGains& gains,
               const PlaneRow& out) {
  HWY_DYNAMIC_DISPATCH(DirectRow)(rows, width, phase, gains, out);
}

}  // namespace zel
#endif
