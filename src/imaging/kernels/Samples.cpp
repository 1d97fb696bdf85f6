#include "imaging/kernels/Samples.h"

#include <algorithm>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/Samples.cpp"
#include <hwy/foreach_target.h>

#include "imaging/kernels/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace zel {
namespace HWY_NAMESPACE {
namespace {

/// Makes one byte of each two by `low`, which leaves what counts in the low byte. The output may be where the
/// input is: it never gets ahead of it.
template <class Low>
HWY_INLINE void Pack(const std::uint8_t* samples, std::size_t count, std::uint8_t* packed, Low low) {
  const std::size_t step = hn::Lanes(Bytes());
  const auto load = [&](const std::uint8_t* p) HWY_ATTR {
    return hn::BitCast(Bytes(), low(hn::BitCast(UnsignedWords(), hn::LoadU(Bytes(), p))));
  };
  std::size_t i = 0;
  for (; i + step <= count; i += step) {
    const auto first = load(samples + 2 * i), second = load(samples + 2 * i + step);
    hn::StoreU(hn::ConcatEven(Bytes(), second, first), Bytes(), packed + i);
  }
  if (i == count) return;
  alignas(64) std::uint8_t rest[2 * HWY_MAX_BYTES] = {};
  std::memcpy(rest, samples + 2 * i, 2 * (count - i));
  hn::Store(hn::ConcatEven(Bytes(), load(rest + step), load(rest)), Bytes(), rest);
  std::memcpy(packed + i, rest, count - i);
}

void PackTenBit(const std::uint8_t* samples, std::size_t count, std::uint8_t* packed) {
  Pack(samples, count, packed, [](UnsignedWordsV v) HWY_ATTR { return hn::ShiftRight<2>(v); });
}

void PackLowByte(const std::uint8_t* samples, std::size_t count, std::uint8_t* packed) {
  Pack(samples, count, packed, [](UnsignedWordsV v) HWY_ATTR { return v; });
}

void ApplyTable(std::uint8_t* samples, std::size_t count, const std::uint8_t* table) {
  const std::size_t step = hn::Lanes(Bytes());
  const ByteTable lanes(table);
  std::size_t i = 0;
  for (; i + step <= count; i += step) {
    hn::StoreU(lanes.At(hn::LoadU(Bytes(), samples + i)), Bytes(), samples + i);
  }
  for (; i < count; ++i) samples[i] = table[samples[i]];
}

HWY_INLINE UnsignedWordsV Reversed(UnsignedWordsV v) {
  return hn::Reverse(UnsignedWords(), v);
}
HWY_INLINE BytesV Reversed(BytesV v) {
  const auto pairs = hn::Reverse(UnsignedWords(), hn::BitCast(UnsignedWords(), v));
  return hn::BitCast(Bytes(), hn::Or(hn::ShiftLeft<8>(pairs), hn::ShiftRight<8>(pairs)));
}

template <class Sample>
void SortTwoTaps(std::uint8_t* row, std::size_t samples, std::uint8_t* scratch) {
  const hn::ScalableTag<Sample> d;
  const std::size_t step = hn::Lanes(d), pairs = samples / 2;
  auto* const from = reinterpret_cast<const Sample*>(row);
  auto* const to = reinterpret_cast<Sample*>(scratch);
  std::size_t i = 0;
  for (; i + step <= pairs; i += step) {
    const auto first = hn::LoadU(d, from + 2 * i), second = hn::LoadU(d, from + 2 * i + step);
    hn::StoreU(hn::ConcatEven(d, second, first), d, to + i);
    hn::StoreU(Reversed(hn::ConcatOdd(d, second, first)), d, to + samples - i - step);
  }
  const auto copy = [&](std::size_t toIndex, std::size_t fromIndex) {
    std::memcpy(scratch + toIndex * sizeof(Sample), row + fromIndex * sizeof(Sample), sizeof(Sample));
  };
  for (; i < pairs; ++i) {
    copy(i, 2 * i);
    copy(samples - 1 - i, 2 * i + 1);
  }
  // An odd middle column keeps its sample.
  if (samples % 2 != 0) copy(pairs, pairs);
  std::memcpy(row, scratch, samples * sizeof(Sample));
}

void SortTwoTapRow(std::uint8_t* row, std::size_t samples, std::size_t sampleBytes, std::uint8_t* scratch) {
  (sampleBytes == 2 ? SortTwoTaps<std::uint16_t> : SortTwoTaps<std::uint8_t>)(row, samples, scratch);
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace zel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zel {

HWY_EXPORT(PackTenBit);
HWY_EXPORT(PackLowByte);
HWY_EXPORT(ApplyTable);
HWY_EXPORT(SortTwoTapRow);

void PackTenBit(const std::uint8_t* samples, std::size_t count, std::uint8_t* packed) {
  HWY_DYNAMIC_DISPATCH(PackTenBit)(samples, count, packed);
}

void PackLowByte(const std::uint8_t* samples, std::size_t count, std::uint8_t* packed) {
  HWY_DYNAMIC_DISPATCH(PackLowByte)(samples, count, packed);
}

void ApplyTable(std::uint8_t* samples, std::size_t count, const std::uint8_t* table) {
  HWY_DYNAMIC_DISPATCH(ApplyTable)(samples, count, table);
}

void SortTwoTapRow(std::uint8_t* row, std::size_t samples, std::size_t sampleBytes, std::uint8_t* scratch) {
  HWY_DYNAMIC_DISPATCH(SortTwoTapRow)(row, samples, sampleBytes, scratch);
}

}  // namespace zel
#endif
