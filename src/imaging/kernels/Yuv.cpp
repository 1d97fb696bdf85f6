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

// What chroma adds to the luminance. The factors were found by search: with them, their shifts and the biases
// that round, every one of the 65536 chromas gives what exact arithmetic does.
constexpr int kRedOfV = 18678, kBlueOfU = 29032;       // in 1/2^14
constexpr int kGreenOfU = 360857, kGreenOfV = 748830;  // in 1/2^20
constexpr int kGreenBias = 524296;

struct Converter {
  Converter()
      : greenHigh(Pair(-(kGreenOfU >> 8), -(kGreenOfV >> 8))),
        greenLow(Pair(-(kGreenOfU & 255), -(kGreenOfV & 255))),
        blueRed(Pair(kBlueOfU, kRedOfV)) {}

  /// Groups of Y0 U Y1 V to twice as many pixels.
  HWY_INLINE void Convert(BytesV yuv, std::uint8_t* out) const {
    const auto groups = SpreadOverBlocks<std::uint64_t>(yuv);
    const auto highBytes = hn::Set(Words(), static_cast<std::int16_t>(0xFF00));
    const auto y = Evens(groups);
    // u and v around 0, times 256.
    const auto chroma = hn::Xor(hn::And(hn::BitCast(Words(), groups), highBytes),
                                hn::Set(Words(), static_cast<std::int16_t>(0x8000)));
    const auto high = AddPairProducts(hn::Zero(Dwords()), chroma, greenHigh);
    const auto low = AddPairProducts(hn::Set(Dwords(), kGreenBias << 8), chroma, greenLow);
    const auto green = hn::ShiftRight<20>(hn::Add(high, hn::ShiftRight<8>(low)));
    const auto rounded = hn::MulFixedPoint15(chroma, blueRed);  // in 1/2^7
    const auto both = hn::BitCast(Dwords(), hn::ShiftRight<7>(hn::Add(rounded, hn::Set(Words(), 64))));
    const auto blueGreen = Interleaved(hn::Add(y, Twice<0>(both)), hn::Add(y, Twice<0>(green)));
    const auto redAlpha = Interleaved(hn::Add(y, Twice<2>(both)), hn::Set(Words(), 255));
    hn::StoreU(hn::BitCast(Bytes(), hn::InterleaveLower(Words(), blueGreen, redAlpha)), Bytes(), out);
    hn::StoreU(hn::BitCast(Bytes(), hn::InterleaveUpper(Words(), blueGreen, redAlpha)), Bytes(),
               out + hn::Lanes(Bytes()));
  }

  static HWY_INLINE WordsV Interleaved(WordsV a, WordsV b) {
    return hn::BitCast(Words(), MergeLimited(a, b));
  }

  /// A group's word at byte 0 or 2, for both of its pixels.
  template <int kByte>
  static HWY_INLINE WordsV Twice(DwordsV v) {
    constexpr std::uint32_t kPair = (kByte + 1) << 8 | kByte;
    const auto first = hn::Set(Dwords(), static_cast<std::int32_t>(kPair << 16 | kPair));
    const auto groupOfBlock = hn::And(hn::Iota(Dwords(), 0), hn::Set(Dwords(), 3));
    const auto words = hn::Add(first, hn::Mul(groupOfBlock, hn::Set(Dwords(), 0x04040404)));
    return hn::BitCast(Words(), hn::TableLookupBytes(hn::BitCast(Bytes(), v), hn::BitCast(Bytes(), words)));
  }

  WordsV greenHigh, greenLow, blueRed;
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
