#include "imaging/kernels/Luminance.h"

#include <algorithm>

#include "imaging/kernels/Pixels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/Luminance.cpp"
#include <hwy/foreach_target.h>

#include "imaging/kernels/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace zel {
namespace HWY_NAMESPACE {
namespace {

/// Of at most 2^23 32-bit pixels: that many times 255 fit into a lane.
std::uint64_t SumPixels(const std::uint8_t* pixels, std::size_t count) {
  const hn::ScalableTag<float> df;
  const std::size_t step = hn::Lanes(df);
  const auto channel = [&](DwordsV v)
                           HWY_ATTR { return hn::ConvertTo(df, hn::And(v, hn::Set(Dwords(), 255))); };
  auto sums = hn::Zero(Dwords());
  std::size_t i = 0;
  for (; i + step <= count; i += step) {
    const auto v = hn::BitCast(Dwords(), hn::LoadU(Bytes(), pixels + 4 * i));
    const auto red = hn::Mul(hn::Set(df, 0.299f), channel(hn::ShiftRight<16>(v)));
    const auto green = hn::Mul(hn::Set(df, 0.587f), channel(hn::ShiftRight<8>(v)));
    const auto blue = hn::Mul(hn::Set(df, 0.114f), channel(v));
    const auto sum = hn::Add(hn::Add(hn::Add(red, green), blue), hn::Set(df, 0.5f));
    sums = hn::Add(sums, hn::ConvertTo(Dwords(), sum));
  }
  alignas(64) std::int32_t lanes[HWY_MAX_BYTES / 4];
  hn::Store(sums, Dwords(), lanes);
  std::uint64_t total = 0;
  for (std::size_t k = 0; k < step; ++k) total += static_cast<std::uint32_t>(lanes[k]);
  for (; i < count; ++i) {
    const std::uint8_t* p = pixels + 4 * i;
    const float red = p[2], green = p[1], blue = p[0];
    total += static_cast<unsigned>(static_cast<int>(0.299f * red + 0.587f * green + 0.114f * blue + 0.5f));
  }
  return total;
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace zel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zel {

HWY_EXPORT(SumPixels);

std::uint64_t SumLuminance(const std::uint8_t* pixels, std::size_t count, int pixelBytes) {
  constexpr std::size_t kExpanded = 1024;
  const std::size_t piece = pixelBytes == 4 ? std::size_t{1} << 23 : kExpanded;
  alignas(64) std::uint8_t expanded[4 * kExpanded];
  std::uint64_t sum = 0;
  for (std::size_t i = 0; i < count; i += piece) {
    const std::size_t length = std::min(piece, count - i);
    const std::uint8_t* from = pixels + i * static_cast<std::size_t>(pixelBytes);
    if (pixelBytes != 4) {
      ExpandPacked(from, length, expanded);
      from = expanded;
    }
    sum += HWY_DYNAMIC_DISPATCH(SumPixels)(from, length);
  }
  return sum;
}

}  // namespace zel
#endif
