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

using Quads = hn::ScalableTag<std::uint64_t>;  // two neighbouring pixels
using Dots = hn::ScalableTag<std::uint32_t>;   // pixels

constexpr int kPiece =
    256;  // destination columns worked on at a time: everything stays in the first-level cache

/// What depends on the column alone, and the pixel pairs of one row.
struct Piece {
  std::ptrdiff_t offset[kPiece];                   // of the left source pixel, in bytes
  alignas(64) std::uint16_t fraction[4 * kPiece];  // fx four times
  alignas(64) std::uint16_t weights[4 * kPiece];   // 256 - fx twice, fx twice
  alignas(64) std::uint64_t upper[kPiece], lower[kPiece];

  void Start(std::int64_t firstColumn, std::int64_t stepX, int count) {
    for (int i = 0; i < count; ++i) {
      const std::int64_t x = (firstColumn + i) * stepX;
      const auto fx = static_cast<std::uint16_t>((x >> 8) & 255);
      offset[i] = static_cast<std::ptrdiff_t>((x >> 16) * 4);
      for (int k = 0; k < 4; ++k) {
        fraction[4 * i + k] = fx;
        weights[4 * i + k] = static_cast<std::uint16_t>(k < 2 ? 256 - fx : fx);
      }
    }
  }

  void Gather(const std::uint8_t* row, std::ptrdiff_t stride, int count) {
    for (int i = 0; i < count; ++i) {
      std::memcpy(&upper[i], row + offset[i], 8);
      std::memcpy(&lower[i], row + stride + offset[i], 8);
    }
  }
};

/// One pixel for each pair, in the lower half of its lane. The weights sum to 256, so that 16 bits hold the
/// sums.
HWY_INLINE hn::Vec<Quads> Blend(const Piece& piece, int i, WordsV fy, WordsV fyLeft) {
  const auto left = hn::BitCast(Words(), hn::Set(Quads(), 0x00000000FFFFFFFFu));
  const auto load = [&](const std::uint16_t* from)
                        HWY_ATTR { return hn::BitCast(Words(), hn::Load(UnsignedWords(), from + 4 * i)); };
  const auto shifted = [](WordsV v) HWY_ATTR {
    return hn::BitCast(Words(), hn::ShiftRight<8>(hn::BitCast(UnsignedWords(), v)));
  };
  const auto lowerRight = shifted(hn::Mul(load(piece.fraction), fy));
  // fy minus that on the left, that on the right.
  const auto lowerWeights = hn::Add(hn::Sub(hn::Xor(lowerRight, left), left), fyLeft);
  const auto upperWeights = hn::Sub(load(piece.weights), lowerWeights);
  const auto upper = hn::BitCast(Bytes(), hn::Load(Quads(), piece.upper + i));
  const auto lower = hn::BitCast(Bytes(), hn::Load(Quads(), piece.lower + i));
  const auto sum = [](WordsV v) HWY_ATTR {
    return hn::Add(v, hn::BitCast(Words(), hn::ShiftRight<32>(hn::BitCast(Quads(), v))));
  };
  const auto evens = sum(hn::Add(hn::Mul(Evens(upper), upperWeights), hn::Mul(Evens(lower), lowerWeights)));
  const auto odds = sum(hn::Add(hn::Mul(Odds(upper), upperWeights), hn::Mul(Odds(lower), lowerWeights)));
  const auto highBytes = hn::Set(Words(), static_cast<std::int16_t>(0xFF00));
  return hn::BitCast(Quads(), hn::Or(shifted(evens), hn::And(odds, highBytes)));
}

void ResampleBilinear(const std::uint8_t* source, int sourceWidth, int sourceHeight,
                      std::uint8_t* destination, int destinationWidth, int destinationHeight) {
  if (destinationWidth < 1 || destinationHeight < 1 || sourceWidth < 2 || sourceHeight < 2) return;
  const std::int64_t stepX = ((std::int64_t{sourceWidth} - 1) << 16) / destinationWidth;
  const std::int64_t stepY = ((std::int64_t{sourceHeight} - 1) << 16) / destinationHeight;
  const std::ptrdiff_t sourceStride = std::ptrdiff_t{sourceWidth} * 4;
  const std::ptrdiff_t stride = std::ptrdiff_t{destinationWidth} * 4;
  constexpr int kStep = static_cast<int>(hn::MaxLanes(Dots()));

  Piece piece{};
  for (int first = 0; first < destinationWidth; first += kPiece) {
    const int count = std::min(kPiece, destinationWidth - first);
    piece.Start(first, stepX, count);
    std::uint8_t* out = destination + std::ptrdiff_t{first} * 4;
    for (int row = 0; row < destinationHeight; ++row, out += stride) {
      const std::int64_t y = row * stepY;
      const auto fraction = static_cast<std::uint16_t>((y >> 8) & 255);
      const auto fy = hn::BitCast(Words(), hn::Set(UnsignedWords(), fraction));
      const auto fyLeft = hn::BitCast(Words(), hn::Set(Quads(), std::uint64_t{fraction} * 0x00010001u));
      piece.Gather(source + static_cast<std::ptrdiff_t>(y >> 16) * sourceStride, sourceStride, count);
      for (int i = 0; i < count; i += kStep) {
        const auto low = hn::BitCast(Dots(), Blend(piece, i, fy, fyLeft));
        const auto high = hn::BitCast(Dots(), Blend(piece, i + kStep / 2, fy, fyLeft));
        const auto pixels = hn::BitCast(Bytes(), hn::ConcatEven(Dots(), high, low));
        if (i + kStep <= count) {
          hn::StoreU(pixels, Bytes(), out + 4 * i);
        } else {
          alignas(64) std::uint8_t rest[HWY_MAX_BYTES];
          hn::Store(pixels, Bytes(), rest);
          std::memcpy(out + 4 * i, rest, static_cast<std::size_t>(count - i) * 4);
        }
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
