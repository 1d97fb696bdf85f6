#include "imaging/kernels/Yuv.h"

#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/Yuv.cpp"
#include <hwy/foreach_target.h>

#include "imaging/kernels/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace zel {
namespace HWY_NAMESPACE {
namespace {

// What chroma adds to the luminance. The factors were found by search: with them, and the bias that rounds,
// every one of the 65536 chromas gives what exact arithmetic does.
constexpr int kRedOfV = 18678, kBlueOfU = 29032;  // in 1/2^14
constexpr int kRedBlueBias = 8256;
constexpr int kGreenOfU = 360857, kGreenOfV = 748830;  // in 1/2^20
constexpr int kGreenBias = 524296;

struct Converter {
  Converter()
      : greenHigh(Pair(-(kGreenOfU >> 8), -(kGreenOfV >> 8))),
        greenLow(Pair(-(kGreenOfU & 255), -(kGreenOfV & 255))),
        red(Pair(0, kRedOfV)),
        blue(Pair(kBlueOfU, 0)) {}

  /// Groups of Y0 U Y1 V to twice as many pixels.
  HWY_INLINE void Convert(BytesV groups, std::uint8_t* out) const {
    const auto y = Evens(groups);
    const auto chroma = hn::Sub(Odds(groups), hn::Set(Words(), 128));
    const auto high = AddPairProducts(hn::Zero(Dwords()), chroma, greenHigh);
    const auto low = AddPairProducts(hn::Set(Dwords(), kGreenBias), chroma, greenLow);
    const auto bias = hn::Set(Dwords(), kRedBlueBias);
    const auto g = Twice(hn::ShiftRight<12>(hn::Add(high, hn::ShiftRight<8>(low))));
    const auto r = Twice(hn::ShiftRight<14>(AddPairProducts(bias, chroma, red)));
    const auto b = Twice(hn::ShiftRight<14>(AddPairProducts(bias, chroma, blue)));
    const auto low16 = hn::Or(Limit(hn::Add(y, b)), hn::ShiftLeft<8>(Limit(hn::Add(y, g))));
    const auto high16 = hn::Or(Limit(hn::Add(y, r)), hn::Set(Words(), static_cast<std::int16_t>(0xFF00)));
    hn::StoreInterleaved2(low16, high16, Words(), reinterpret_cast<std::int16_t*>(out));
  }

  /// A group's value for both of its pixels.
  static HWY_INLINE WordsV Twice(DwordsV v) {
    alignas(16) static constexpr std::uint8_t kLowWords[16] = {0, 1, 0, 1, 4,  5,  4,  5,
                                                               8, 9, 8, 9, 12, 13, 12, 13};
    return hn::BitCast(Words(),
                       hn::TableLookupBytes(hn::BitCast(Bytes(), v), hn::LoadDup128(Bytes(), kLowWords)));
  }

  WordsV greenHigh, greenLow, red, blue;
};

void YuvToPixels(const std::uint8_t* yuv, std::size_t groups, std::uint8_t* bgra) {
  const std::size_t step = hn::Lanes(Bytes()) / 4;
  const Converter converter;
  std::size_t i = 0;
  for (; i + step <= groups; i += step) converter.Convert(hn::LoadU(Bytes(), yuv + 4 * i), bgra + 8 * i);
  if (i == groups) return;
  alignas(64) std::uint8_t rest[HWY_MAX_BYTES] = {}, pixels[2 * HWY_MAX_BYTES];
  std::memcpy(rest, yuv + 4 * i, 4 * (groups - i));
  converter.Convert(hn::Load(Bytes(), rest), pixels);
  std::memcpy(bgra + 8 * i, pixels, 8 * (groups - i));
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace zel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zel {

HWY_EXPORT(YuvToPixels);

void YuvToPixels(const std::uint8_t* yuv, std::size_t groups, std::uint8_t* bgra) {
  HWY_DYNAMIC_DISPATCH(YuvToPixels)(yuv, groups, bgra);
}

}  // namespace zel
#endif
