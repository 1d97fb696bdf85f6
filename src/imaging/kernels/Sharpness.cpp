#include "imaging/kernels/Sharpness.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/Sharpness.cpp"
#include <hwy/foreach_target.h>

#include "imaging/kernels/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace zel {
namespace HWY_NAMESPACE {
namespace {

/// |difference| * strength / 10.
HWY_INLINE WordsV Strengthen(WordsV difference, UnsignedWordsV strength) {
  const auto product = hn::Mul(hn::BitCast(UnsignedWords(), difference), strength);
  // 0xCCCD / 2^19 is a tenth, exact for all 16-bit numbers.
  return hn::BitCast(Words(), hn::ShiftRight<3>(hn::MulHigh(product, hn::Set(UnsignedWords(), 0xCCCD))));
}

HWY_INLINE BytesV SharpenBytes(BytesV value, BytesV mean, UnsignedWordsV strength) {
  const auto above = hn::SaturatedSub(value, mean), below = hn::SaturatedSub(mean, value);
  const auto difference = hn::Or(above, below);
  const auto change =
      MergeLimited(Strengthen(Evens(difference), strength), Strengthen(Odds(difference), strength));
  return hn::IfThenElse(hn::Eq(below, hn::Zero(Bytes())), hn::SaturatedAdd(value, change),
                        hn::SaturatedSub(value, change));
}

void SharpenRow(const std::uint8_t* const block[4], const std::uint8_t* row, int width, int strength,
                std::int16_t* scratch, std::uint8_t* out) {
  const int step = static_cast<int>(hn::Lanes(Bytes()));
  // Sums of four samples above one another, even and odd columns by themselves, with room for a neighbour on
  // each side.
  std::int16_t* evens = scratch + 32;
  std::int16_t* odds = evens + (width + 1) / 2 + 2 * 32;
  for (int i = 0; i < width; i += step) {
    const auto a = hn::LoadU(Bytes(), block[0] + i), b = hn::LoadU(Bytes(), block[1] + i),
               c = hn::LoadU(Bytes(), block[2] + i), d = hn::LoadU(Bytes(), block[3] + i);
    hn::StoreU(hn::Add(hn::Add(Evens(a), Evens(b)), hn::Add(Evens(c), Evens(d))), Words(), evens + i / 2);
    hn::StoreU(hn::Add(hn::Add(Odds(a), Odds(b)), hn::Add(Odds(c), Odds(d))), Words(), odds + i / 2);
  }
  const auto factor = hn::Set(UnsignedWords(), static_cast<std::uint16_t>(strength));
  for (int i = 0; i < width; i += step) {
    const auto even = hn::LoadU(Words(), evens + i / 2), odd = hn::LoadU(Words(), odds + i / 2);
    const auto oddLeft = hn::LoadU(Words(), odds + i / 2 - 1);
    const auto middle = hn::Add(hn::Add(even, odd), oddLeft);
    const auto evenMean = hn::ShiftRight<4>(hn::Add(middle, hn::LoadU(Words(), evens + i / 2 - 1)));
    const auto oddMean = hn::ShiftRight<4>(hn::Add(middle, hn::LoadU(Words(), evens + i / 2 + 1)));
    const auto value = hn::LoadU(Bytes(), row + i);
    hn::StoreU(SharpenBytes(value, Merge(evenMean, oddMean), factor), Bytes(), out + i);
  }

  out[0] = row[0];
  out[1] = row[1];
  const int last = width - 1;
  int sum = 0;
  for (int i = 0; i < 4; ++i) sum += ((last - i) % 2 == 0 ? evens : odds)[(last - i) / 2];
  const int difference = row[last] - (sum >> 4);
  out[last] = static_cast<std::uint8_t>(std::clamp(row[last] + difference * strength / 10, 0, 255));
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace zel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zel {

HWY_EXPORT(SharpenRow);

void SharpenRow(const std::uint8_t* const block[4], const std::uint8_t* row, int width, int strength,
                std::int16_t* scratch, std::uint8_t* out) {
  HWY_DYNAMIC_DISPATCH(SharpenRow)(block, row, width, strength, scratch, out);
}

}  // namespace zel
#endif
