#include "imaging/kernels/MosaicSums.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/MosaicSums.cpp"
#include <hwy/foreach_target.h>

#include "imaging/kernels/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace zel {
namespace HWY_NAMESPACE {
namespace {

void AddMosaicRow(const std::uint8_t* samples, int width, std::uint64_t sums[2]) {
  const hn::ScalableTag<std::uint64_t> d64;
  const int step = static_cast<int>(hn::Lanes(Bytes()));
  const auto evenColumns = hn::BitCast(Bytes(), hn::Set(UnsignedWords(), 0x00FF));
  auto all = hn::Zero(d64), even = all;
  int column = 0;
  for (; column + step <= width; column += step) {
    const auto v = hn::LoadU(Bytes(), samples + column);
    all = hn::Add(all, hn::SumsOf8(v));
    even = hn::Add(even, hn::SumsOf8(hn::And(v, evenColumns)));
  }
  const std::uint64_t evenSum = hn::GetLane(hn::SumOfLanes(d64, even));
  sums[0] += evenSum;
  sums[1] += hn::GetLane(hn::SumOfLanes(d64, all)) - evenSum;
  for (; column < width; ++column) sums[column & 1] += samples[column];
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace zel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zel {

HWY_EXPORT(AddMosaicRow);

void AddMosaic(const std::uint8_t* frame, std::ptrdiff_t stride, int width, int height, MosaicSums& sums) {
  for (int row = 0; row < height; ++row) {
    HWY_DYNAMIC_DISPATCH(AddMosaicRow)(frame + row * stride, width, sums.at[row & 1]);
  }
}

}  // namespace zel
#endif
