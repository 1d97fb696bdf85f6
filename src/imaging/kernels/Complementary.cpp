#include "imaging/kernels/Complementary.h"

#include <algorithm>
#include <utility>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/Complementary.cpp"
#include <hwy/foreach_target.h>

#include "imaging/kernels/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace zel {
namespace HWY_NAMESPACE {
namespace {

/// Thousandths to the nearest byte, ties upward.
std::uint8_t Round(int thousandths) {
  return static_cast<std::uint8_t>(std::clamp(thousandths + 500, 0, 255'999) / 1000);
}

/// The four filters of a cell; each name stands for the same one wherever the cell lies.
void DecodePixel(int a, int b, int c, int d, std::uint8_t* pixel) {
  const int y = (a + b + c + d) >> 2;
  const int u = std::max(0, (d + b) - (c + a));
  const int v = std::max(0, (d + a) - (c + b));
  pixel[0] = Round(1000 * y + 2032 * u);
  pixel[1] = Round(1000 * y - 395 * u - 581 * v);
  pixel[2] = Round(1000 * y + 1140 * v);
}

/// Floor of v / (2^(16 + kShift) / factor), for words up to 2^16.
template <int kShift, class V>
HWY_INLINE V Divide(V v, int factor) {
  const auto words = hn::BitCast(UnsignedWords(), v);
  const auto high = hn::MulHigh(words, hn::Set(UnsignedWords(), static_cast<std::uint16_t>(factor)));
  return hn::BitCast(hn::DFromV<V>(), hn::ShiftRight<kShift>(high));
}

struct PixelWords {
  WordsV blue, green, red;  // to be limited
};

/// The same in words: whole parts are taken out of the factors, so that what is left to divide fits.
HWY_INLINE PixelWords DecodeWords(WordsV a, WordsV b, WordsV c, WordsV d) {
  const auto zero = hn::Zero(Words());
  const auto y = hn::ShiftRight<2>(hn::Add(hn::Add(a, b), hn::Add(c, d)));
  const auto u = hn::Max(zero, hn::Sub(hn::Add(d, b), hn::Add(c, a)));
  const auto v = hn::Max(zero, hn::Sub(hn::Add(d, a), hn::Add(c, b)));
  // 8389 / 2^23 is a thousandth up to 16820, 5243 / 2^19 a hundredth up to 7190, 33555 / 2^22 one of 125 up
  // to 37163.
  const auto blueRest = Divide<7>(hn::Add(hn::ShiftLeft<5>(u), hn::Set(Words(), 500)), 8389);
  const auto redRest = Divide<3>(hn::Add(hn::Mul(v, hn::Set(Words(), 14)), hn::Set(Words(), 50)), 5243);
  const auto chroma = [](WordsV pairs) HWY_ATTR {
    const auto thousandths = AddPairProducts(hn::Set(Dwords(), 499), pairs, Pair(395, 581));
    return Divide<6>(hn::ShiftRight<3>(thousandths), 33555);
  };
  const auto green = hn::ReorderDemote2To(Words(), chroma(hn::InterleaveLower(Words(), u, v)),
                                          chroma(hn::InterleaveUpper(Words(), u, v)));
  return {hn::Add(hn::Add(y, hn::Add(u, u)), blueRest), hn::Sub(y, green), hn::Add(hn::Add(y, v), redRest)};
}

/// Whole vectors of pixels from an even column on. `named` and `other` are the cells' rows, at that column,
/// the one with a and b first.
template <int kPixelBytes>
HWY_INLINE void DecodeVector(const std::uint8_t* named, const std::uint8_t* other, std::uint8_t* out) {
  const auto ab = hn::LoadU(Bytes(), named), cd = hn::LoadU(Bytes(), other);
  const auto b = Odds(ab), d = Odds(cd);
  const auto even = DecodeWords(Evens(ab), b, Evens(cd), d);
  const auto odd =
      DecodeWords(Evens(hn::LoadU(Bytes(), named + 2)), b, Evens(hn::LoadU(Bytes(), other + 2)), d);
  const auto blue = MergeLimited(even.blue, odd.blue), green = MergeLimited(even.green, odd.green),
             red = MergeLimited(even.red, odd.red);
  if constexpr (kPixelBytes == 3) {
    hn::StoreInterleaved3(blue, green, red, Bytes(), out);
  } else {
    BytesV unused, alpha;
    hn::LoadInterleaved4(Bytes(), out, unused, unused, unused, alpha);
    hn::StoreInterleaved4(blue, green, red, alpha, Bytes(), out);
  }
}

template <int kPixelBytes>
void DecodeRows(const std::uint8_t* frame, std::size_t frameBytes, std::size_t pitch, int width, int firstRow,
                int endRow, std::uint8_t* out, std::ptrdiff_t outStride) {
  constexpr int kStep = static_cast<int>(hn::MaxLanes(Bytes()));
  for (int row = firstRow; row < endRow; ++row) {
    const std::size_t start = std::size_t(row) * pitch;
    std::uint8_t* const pixels = out + row * outStride;
    for (int column = 1; column < width;) {
      const std::size_t cell = start + std::size_t(column);
      std::uint8_t* const pixel = pixels + std::ptrdiff_t{column} * kPixelBytes;
      if (column % 2 == 0 && column + kStep <= width && cell + pitch + kStep + 2 <= frameBytes) {
        const std::uint8_t* const here = frame + cell;
        DecodeVector<kPixelBytes>(row & 1 ? here + pitch : here, row & 1 ? here : here + pitch, pixel);
        column += kStep;
        continue;
      }
      if (cell + pitch + 1 >= frameBytes) break;
      int a = frame[cell], b = frame[cell + 1], c = frame[cell + pitch], d = frame[cell + pitch + 1];
      if (column & 1) {
        std::swap(a, b);
        std::swap(c, d);
      }
      if (row & 1) {
        std::swap(a, c);
        std::swap(b, d);
      }
      DecodePixel(a, b, c, d, pixel);
      ++column;
    }
  }
}

void DecodeComplementary(const std::uint8_t* frame, std::size_t frameBytes, std::size_t pitch, int width,
                         int firstRow, int endRow, int pixelBytes, std::uint8_t* out,
                         std::ptrdiff_t outStride) {
  (pixelBytes == 4 ? DecodeRows<4> : DecodeRows<3>)(frame, frameBytes, pitch, width, firstRow, endRow, out,
                                                    outStride);
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace zel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zel {

HWY_EXPORT(DecodeComplementary);

void DecodeComplementary(const std::uint8_t* frame, std::size_t frameBytes, std::size_t pitch, int width,
                         int firstRow, int endRow, int pixelBytes, std::uint8_t* out,
                         std::ptrdiff_t outStride) {
  HWY_DYNAMIC_DISPATCH(DecodeComplementary)
  (frame, frameBytes, pitch, width, firstRow, endRow, pixelBytes, out, outStride);
}

}  // namespace zel
#endif
