#include "imaging/kernels/Resample.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/Resample.cpp"
#include <hwy/foreach_target.h>

#include "imaging/kernels/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace zel {
namespace HWY_NAMESPACE {
namespace {

// Pixels have 32-bit lanes here.
constexpr int kStep = static_cast<int>(hn::MaxLanes(Dwords()));

/// Source pixels of destination pixels side by side: of the row above and the one below, left and right; and
/// how far each lies to the right of the left one, in 1/256.
struct Corners {
  DwordsV upperLeft, upperRight, lowerLeft, lowerRight;
  DwordsV fraction;
};

/// The weights sum to 256, so that 16 bits hold the sums; each stands in both halves of a lane.
HWY_INLINE BytesV Blend(const Corners& corners, WordsV fy) {
  const auto shifted = [](WordsV v) HWY_ATTR {
    return hn::BitCast(Words(), hn::ShiftRight<8>(hn::BitCast(UnsignedWords(), v)));
  };
  const auto fx = hn::BitCast(Words(), hn::Or(corners.fraction, hn::ShiftLeft<16>(corners.fraction)));
  const auto lowerRight = shifted(hn::Mul(fx, fy));
  const auto upperRight = hn::Sub(fx, lowerRight), lowerLeft = hn::Sub(fy, lowerRight);
  const auto upperLeft = hn::Sub(hn::Sub(hn::Set(Words(), 256), fx), lowerLeft);
  const auto sum = [&](auto part) HWY_ATTR {
    const auto upper = hn::Add(hn::Mul(part(hn::BitCast(Bytes(), corners.upperLeft)), upperLeft),
                               hn::Mul(part(hn::BitCast(Bytes(), corners.upperRight)), upperRight));
    const auto lower = hn::Add(hn::Mul(part(hn::BitCast(Bytes(), corners.lowerLeft)), lowerLeft),
                               hn::Mul(part(hn::BitCast(Bytes(), corners.lowerRight)), lowerRight));
    return hn::Add(upper, lower);
  };
  const auto evens = sum([](BytesV v) HWY_ATTR { return Evens(v); });
  const auto odds = sum([](BytesV v) HWY_ATTR { return Odds(v); });
  const auto highBytes = hn::Set(Words(), static_cast<std::int16_t>(0xFF00));
  return hn::BitCast(Bytes(), hn::Or(shifted(evens), hn::And(odds, highBytes)));
}

/// Picks lanes of two vectors side by side.
struct Window {
  explicit Window(DwordsV lane)
      : inSecond(hn::Gt(lane, hn::Set(Dwords(), kStep - 1))),
        indices(hn::IndicesFromVec(Dwords(), hn::And(lane, hn::Set(Dwords(), kStep - 1)))) {}
  HWY_INLINE DwordsV Pick(DwordsV first, DwordsV second) const {
    return hn::IfThenElse(inSecond, hn::TableLookupLanes(second, indices),
                          hn::TableLookupLanes(first, indices));
  }
  hn::Mask<Dwords> inSecond;
  decltype(hn::IndicesFromVec(Dwords(), DwordsV())) indices;
};

/// A line of source pixels and the one below it, both with all their pixels from `left` on.
struct SourceRows {
  const std::uint8_t* upper;
  const std::uint8_t* lower;
};

/// For steps up to 2 and two vectors of pixels in each row. `positions` are those of the destination pixels,
/// in 1/2^16, from the first source pixel on.
HWY_INLINE Corners FetchWindow(const SourceRows& rows, DwordsV positions) {
  const auto lane = hn::ShiftRight<16>(positions);
  const Window left(lane), right(hn::Add(lane, hn::Set(Dwords(), 1)));
  const auto load = [](const std::uint8_t* p, int vector) HWY_ATTR {
    return hn::BitCast(Dwords(), hn::LoadU(Bytes(), p + 4 * kStep * vector));
  };
  const auto upper0 = load(rows.upper, 0), upper1 = load(rows.upper, 1);
  const auto lower0 = load(rows.lower, 0), lower1 = load(rows.lower, 1);
  return {left.Pick(upper0, upper1), right.Pick(upper0, upper1), left.Pick(lower0, lower1),
          right.Pick(lower0, lower1), hn::And(hn::ShiftRight<8>(positions), hn::Set(Dwords(), 255))};
}

/// Pixel by pixel; `position` is that of the first in 1/2^16.
HWY_INLINE Corners FetchSingly(const SourceRows& rows, std::int64_t position, std::int64_t step, int count) {
  alignas(64) std::int32_t lanes[5][kStep] = {};
  for (int i = 0; i < count; ++i, position += step) {
    const std::ptrdiff_t offset = static_cast<std::ptrdiff_t>(position >> 16) * 4;
    std::memcpy(&lanes[0][i], rows.upper + offset, 4);
    std::memcpy(&lanes[1][i], rows.upper + offset + 4, 4);
    std::memcpy(&lanes[2][i], rows.lower + offset, 4);
    std::memcpy(&lanes[3][i], rows.lower + offset + 4, 4);
    lanes[4][i] = static_cast<std::int32_t>((position >> 8) & 255);
  }
  const auto load = [&](int k) HWY_ATTR { return hn::Load(Dwords(), lanes[k]); };
  return {load(0), load(1), load(2), load(3), load(4)};
}

void ResampleBilinear(const std::uint8_t* source, int sourceWidth, int sourceHeight,
                      std::uint8_t* destination, int destinationWidth, int destinationHeight) {
  if (destinationWidth < 1 || destinationHeight < 1 || sourceWidth < 2 || sourceHeight < 2) return;
  const std::int64_t stepX = ((std::int64_t{sourceWidth} - 1) << 16) / destinationWidth;
  const std::int64_t stepY = ((std::int64_t{sourceHeight} - 1) << 16) / destinationHeight;
  const std::ptrdiff_t sourceStride = std::ptrdiff_t{sourceWidth} * 4;
  const bool windowed = stepX <= 2 << 16;
  const auto steps =
      hn::Mul(hn::Iota(Dwords(), 0), hn::Set(Dwords(), static_cast<std::int32_t>(windowed ? stepX : 0)));

  for (int row = 0; row < destinationHeight; ++row) {
    const std::int64_t y = row * stepY;
    const std::uint8_t* upper = source + static_cast<std::ptrdiff_t>(y >> 16) * sourceStride;
    const auto fy = hn::Set(Words(), static_cast<std::int16_t>((y >> 8) & 255));
    std::uint8_t* const line = destination + std::ptrdiff_t{row} * destinationWidth * 4;
    for (int column = 0; column < destinationWidth; column += kStep) {
      const std::int64_t x = column * stepX, left = x >> 16;
      const int count = std::min(kStep, destinationWidth - column);
      const std::uint8_t* first = upper + static_cast<std::ptrdiff_t>(left) * 4;
      const SourceRows rows{first, first + sourceStride};
      std::uint8_t* const out = line + std::ptrdiff_t{column} * 4;
      const auto pixels =
          windowed && left + 2 * kStep <= sourceWidth
              ? Blend(FetchWindow(rows,
                                  hn::Add(steps, hn::Set(Dwords(), static_cast<std::int32_t>(x & 0xFFFF)))),
                      fy)
              : Blend(FetchSingly(rows, x & 0xFFFF, stepX, count), fy);
      if (count == kStep) {
        hn::StoreU(pixels, Bytes(), out);
      } else {
        alignas(64) std::uint8_t rest[HWY_MAX_BYTES];
        hn::Store(pixels, Bytes(), rest);
        std::memcpy(out, rest, static_cast<std::size_t>(count) * 4);
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

HWY_EXPORT(ResampleBilinear);

void ResampleBilinear(const std::uint8_t* source, int sourceWidth, int sourceHeight,
                      std::uint8_t* destination, int destinationWidth, int destinationHeight) {
  HWY_DYNAMIC_DISPATCH(ResampleBilinear)
  (source, sourceWidth, sourceHeight, destination, destinationWidth, destinationHeight);
}

}  // namespace zel
#endif
