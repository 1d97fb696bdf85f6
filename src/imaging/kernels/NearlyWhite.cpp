#include "imaging/kernels/NearlyWhite.h"

#include <algorithm>
#include <cstdlib>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/NearlyWhite.cpp"
#include <hwy/foreach_target.h>

#include "imaging/kernels/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace zel {
namespace HWY_NAMESPACE {
namespace {

// Luminance and colour differences in 1/10000, by red, green and blue.
constexpr int kY[3] = {2990, 5870, 1140}, kCb[3] = {-1687, -3313, 5000}, kCr[3] = {5000, -4187, -813};
constexpr int kNearlyWhite = 2'005'000;
constexpr int kMostVectors = 1 << 15;  // whose samples' sums fit into 32-bit lanes

/// Two-byte samples, one after the other.
struct Samples {
  const std::uint8_t* bytes;

  int operator[](std::ptrdiff_t i) const { return bytes[2 * i] | bytes[2 * i + 1] << 8; }
  HWY_INLINE DwordsV At(std::ptrdiff_t i) const {
    const hn::Rebind<std::uint16_t, Dwords> words;
    return hn::PromoteTo(Dwords(), hn::LoadU(words, reinterpret_cast<const std::uint16_t*>(bytes + 2 * i)));
  }
};

struct Colors {
  DwordsV red, green, blue;
};

HWY_INLINE DwordsV Weigh(DwordsV nearest, DwordsV second, DwordsV third, DwordsV last) {
  const auto beside = hn::Add(second, third);
  const auto nine = hn::Add(hn::ShiftLeft<3>(nearest), nearest);
  const auto three = hn::Add(hn::ShiftLeft<1>(beside), beside);
  return hn::ShiftRight<4>(hn::Add(hn::Add(nine, three), last));
}

/// Of neighbouring positions, of which those of `isGreen` lie on green; the row's other colour is red, or
/// blue in the blue rows.
HWY_INLINE Colors ColorsAt(Samples here, std::ptrdiff_t pitch, hn::Mask<Dwords> isGreen, bool blueRow) {
  const auto at = [&](int row, int column) HWY_ATTR { return here.At(row * pitch + column); };
  const auto own = hn::IfThenElse(isGreen, Weigh(at(0, -1), at(-2, -1), at(0, 1), at(-2, 1)),
                                  Weigh(at(0, 0), at(-2, 0), at(0, -2), at(-2, -2)));
  const auto other = hn::IfThenElse(isGreen, Weigh(at(-1, 0), at(-1, -2), at(1, 0), at(1, -2)),
                                    Weigh(at(-1, -1), at(-1, 1), at(1, -1), at(1, 1)));
  const auto green = hn::ShiftRight<1>(
      hn::IfThenElse(isGreen, hn::Add(at(-1, -1), at(0, 0)), hn::Add(at(-1, 0), at(0, -1))));
  return blueRow ? Colors{other, green, own} : Colors{own, green, other};
}

HWY_INLINE DwordsV Mix(const int (&weights)[3], const Colors& c) {
  const auto part = [](int weight, DwordsV v) HWY_ATTR { return hn::Mul(hn::Set(Dwords(), weight), v); };
  return hn::Add(hn::Add(part(weights[0], c.red), part(weights[1], c.green)), part(weights[2], c.blue));
}

int Mix(const int (&weights)[3], int r, int g, int b) {
  return weights[0] * r + weights[1] * g + weights[2] * b;
}

std::uint64_t Total(DwordsV v) {
  alignas(64) std::int32_t lanes[HWY_MAX_BYTES / 4];
  hn::Store(v, Dwords(), lanes);
  std::uint64_t total = 0;
  for (std::size_t i = 0; i < hn::Lanes(Dwords()); ++i) total += static_cast<std::uint32_t>(lanes[i]);
  return total;
}

void AddNearlyWhite(const std::uint8_t* row, std::ptrdiff_t pitch, int width, BayerPhase phase,
                    WhiteSums& sums) {
  const int step = static_cast<int>(hn::Lanes(Dwords()));
  // Vectors begin at even columns.
  const auto odd = hn::And(hn::Iota(Dwords(), 0), hn::Set(Dwords(), 1));
  const auto isGreen = hn::Eq(odd, hn::Set(Dwords(), phase.row == phase.column ? 0 : 1));
  auto red = hn::Zero(Dwords()), green = red, blue = red, count = red;
  int i = 2;
  for (int n = 0; n < kMostVectors && i + step + 2 <= width; ++n, i += step) {
    const Colors c = ColorsAt({row + 2 * std::ptrdiff_t{i}}, pitch, isGreen, phase.row);
    const auto whiteness = hn::Sub(hn::Sub(Mix(kY, c), hn::Abs(Mix(kCb, c))), hn::Abs(Mix(kCr, c)));
    const auto isWhite = hn::Gt(whiteness, hn::Set(Dwords(), kNearlyWhite));
    red = hn::Add(red, hn::IfThenElseZero(isWhite, c.red));
    green = hn::Add(green, hn::IfThenElseZero(isWhite, c.green));
    blue = hn::Add(blue, hn::IfThenElseZero(isWhite, c.blue));
    count = hn::Sub(count, hn::VecFromMask(Dwords(), isWhite));
  }
  sums.red += Total(red);
  sums.green += Total(green);
  sums.blue += Total(blue);
  sums.count += Total(count);
  for (; i < width - 2; ++i) {
    const BayerSample c =
        DirectColorAt(Samples{row + 2 * std::ptrdiff_t{i}}, pitch, phase.row, phase.column != ((i & 1) != 0));
    const int r = c.red >> 4, g = c.green, b = c.blue >> 4;
    if (Mix(kY, r, g, b) - std::abs(Mix(kCb, r, g, b)) - std::abs(Mix(kCr, r, g, b)) <= kNearlyWhite)
      continue;
    sums.red += static_cast<unsigned>(r);
    sums.green += static_cast<unsigned>(g);
    sums.blue += static_cast<unsigned>(b);
    ++sums.count;
  }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace zel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zel {

HWY_EXPORT(AddNearlyWhite);

void AddNearlyWhite(const std::uint8_t* row, std::ptrdiff_t pitch, int width, BayerPhase phase,
                    WhiteSums& sums) {
  HWY_DYNAMIC_DISPATCH(AddNearlyWhite)(row, pitch, width, phase, sums);
}

}  // namespace zel
#endif
