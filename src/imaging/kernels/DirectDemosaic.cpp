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
constexpr int kLargeGain = 1 << 15;  // 256 times unity

/// Multiplies sums below 2^kBits by a gain in 1/2^(kBits - 1) and limits them to 255. Gains from
/// kLargeGain on are split into a factor and a rest, so that both products fit into 16 bits: sums above 255
/// are then white whatever the rest is.
template <int kBits, bool kLarge>
struct Gain {
  explicit Gain(int gain) {
    constexpr int kShift = kBits - 1;
    const int g = std::clamp(gain, 0, kMaxGain), below = kLarge ? g & ((1 << kShift) - 1) : g;
    whole = hn::Set(UnsignedWords(), static_cast<std::uint16_t>(std::min(g >> kShift, 256)));
    rest = hn::Set(UnsignedWords(), static_cast<std::uint16_t>(below << 1));
  }
  HWY_INLINE WordsV Apply(WordsV sum) const {
    const auto v = hn::BitCast(UnsignedWords(), sum), white = hn::Set(UnsignedWords(), 255);
    // 2^(16 - kBits) * 2 / 2^16: the product's upper half has the gain's unit taken out.
    auto product = hn::MulHigh(hn::ShiftLeft<16 - kBits>(v), rest);
    if constexpr (kLarge) product = hn::SaturatedAdd(hn::Mul(hn::Min(v, white), whole), product);
    return hn::BitCast(Words(), hn::Min(product, white));
  }
  UnsignedWordsV whole, rest;
};

template <bool kLarge>
struct Gains {
  explicit Gains(const ColorGains& gains) : red(gains.r), green(gains.g), blue(gains.b) {}
  Gain<12, kLarge> red;
  Gain<8, kLarge> green;
  Gain<12, kLarge> blue;
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

template <bool kGreenFirst, bool kLarge>
void ColorRow(const MosaicRows& rows, int width, BayerPhase phase, const ColorGains& gains,
              const PlaneRow& out) {
  const Gains<kLarge> all(gains);
  const auto& ownGain = phase.row ? all.blue : all.red;
  const auto& otherGain = phase.row ? all.red : all.blue;
  std::uint8_t* const own = phase.row ? out.blue : out.red;
  std::uint8_t* const other = phase.row ? out.red : out.blue;
  for (int i = 0; i < width; i += static_cast<int>(hn::Lanes(Bytes()))) {
    const RowTaps a = LoadTaps(rows.farAbove + i), b = LoadTaps(rows.above + i), c = LoadTaps(rows.here + i),
                  d = LoadTaps(rows.below + i);
    const Neighbourhood evens{a.even, b.even, c.even, d.even}, odds{a.odd, b.odd, c.odd, d.odd};
    const Sums even = kGreenFirst ? AtGreen(evens) : AtColor(evens);
    const Sums odd = kGreenFirst ? AtColor(odds) : AtGreen(odds);
    hn::StoreU(Merge(ownGain.Apply(even.own), ownGain.Apply(odd.own)), Bytes(), own + i);
    hn::StoreU(Merge(all.green.Apply(even.green), all.green.Apply(odd.green)), Bytes(), out.green + i);
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
  using Row = void (*)(const MosaicRows&, int, BayerPhase, const ColorGains&, const PlaneRow&);
  constexpr Row kRows[2][2] = {{ColorRow<false, false>, ColorRow<false, true>},
                               {ColorRow<true, false>, ColorRow<true, true>}};
  const bool large = std::max({gains.r, gains.g, gains.b}) >= kLargeGain;
  kRows[greenFirst][large](rows, width, phase, gains, out);
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
