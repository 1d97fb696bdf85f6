// Vector helpers that several kernels share; included once per target, hence no #pragma once.
#if defined(ZEL_IMAGING_KERNELS_LANES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZEL_IMAGING_KERNELS_LANES_INL_H_
#undef ZEL_IMAGING_KERNELS_LANES_INL_H_
#else
#define ZEL_IMAGING_KERNELS_LANES_INL_H_
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>

HWY_BEFORE_NAMESPACE();
namespace zel {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<std::uint8_t>;
using Words = hn::ScalableTag<std::int16_t>;
using UnsignedWords = hn::ScalableTag<std::uint16_t>;
using BytesV = hn::Vec<Bytes>;
using WordsV = hn::Vec<Words>;
using UnsignedWordsV = hn::Vec<UnsignedWords>;

/// Bytes are widened by splitting them into those at even and at odd places: a mosaic's two column phases
/// fall apart that way, and no lane moves.
HWY_INLINE WordsV Evens(BytesV v) {
  return hn::And(hn::BitCast(Words(), v), hn::Set(Words(), 0x00FF));
}
HWY_INLINE WordsV Odds(BytesV v) {
  return hn::BitCast(Words(), hn::ShiftRight<8>(hn::BitCast(UnsignedWords(), v)));
}
/// Puts them together again; both within 0..255.
HWY_INLINE BytesV Merge(WordsV evens, WordsV odds) {
  return hn::BitCast(Bytes(), hn::Or(evens, hn::ShiftLeft<8>(odds)));
}
HWY_INLINE WordsV Limit(WordsV v) {
  return hn::Min(hn::Max(v, hn::Zero(Words())), hn::Set(Words(), 255));
}

template <class V>
HWY_INLINE V MeanOfTwo(V a, V b, V differ) {
  return hn::Sub(hn::AverageRound(a, b), hn::And(differ, hn::Set(hn::DFromV<V>(), 1)));
}

/// (a + b + c + d) >> 2 in bytes: the floor of a mean of floored means misses one only where both of those
/// were rounded and so is this.
template <class V>
HWY_INLINE V MeanOfFour(V a, V b, V c, V d) {
  const auto differ1 = hn::Xor(a, b), differ2 = hn::Xor(c, d);
  const auto mean1 = MeanOfTwo(a, b, differ1), mean2 = MeanOfTwo(c, d, differ2);
  const auto differ = hn::Xor(mean1, mean2);
  const auto missed = hn::And(hn::And(differ1, differ2), hn::And(differ, hn::Set(hn::DFromV<V>(), 1)));
  return hn::Add(MeanOfTwo(mean1, mean2, differ), missed);
}

/// Sums of the products of neighbouring lanes, added to `sum`.
using Dwords = hn::ScalableTag<std::int32_t>;
using DwordsV = hn::Vec<Dwords>;
HWY_INLINE DwordsV AddPairProducts(DwordsV sum, WordsV a, WordsV b) {
#if HWY_TARGET == HWY_AVX3_DL
  // Both steps in one instruction, which the target has but Highway's compiler flags for it leave out.
  asm("vpdpwssd %2, %1, %0" : "+v"(sum.raw) : "v"(a.raw), "v"(b.raw));
  return sum;
#else
  DwordsV rest = hn::Zero(Dwords());
  sum = hn::ReorderWidenMulAccumulate(Dwords(), a, b, sum, rest);
  return hn::RearrangeToOddPlusEven(sum, rest);
#endif
}
/// The same pair of factors in all lanes.
HWY_INLINE WordsV Pair(int first, int second) {
  const auto low = static_cast<std::uint32_t>(first) & 0xFFFFu;
  const auto high = static_cast<std::uint32_t>(second) << 16;
  return hn::BitCast(Words(), hn::Set(hn::ScalableTag<std::uint32_t>(), low | high));
}

#if HWY_TARGET == HWY_AVX3_DL
/// A table of 256 bytes held in registers.
struct ByteTable {
  explicit ByteTable(const std::uint8_t* table)
      : parts{hn::LoadU(Bytes(), table), hn::LoadU(Bytes(), table + 64), hn::LoadU(Bytes(), table + 128),
              hn::LoadU(Bytes(), table + 192)} {}
  HWY_INLINE BytesV At(BytesV index) const {
    const BytesV low{_mm512_permutex2var_epi8(parts[0].raw, index.raw, parts[1].raw)};
    const BytesV high{_mm512_permutex2var_epi8(parts[2].raw, index.raw, parts[3].raw)};
    return hn::IfThenElse(hn::TestBit(index, hn::Set(Bytes(), 0x80)), high, low);
  }
  BytesV parts[4];
};
#else
/// A table of 256 bytes: sixteen shuffles by the low half of the index, of which its upper bits choose one.
struct ByteTable {
  explicit ByteTable(const std::uint8_t* entries) {
    for (int i = 0; i < 256; ++i) table[i] = entries[i];
  }
  HWY_INLINE BytesV At(BytesV index) const {
    return Choose<256>(table, index, hn::And(index, hn::Set(Bytes(), 0x0F)));
  }
  template <int kEntries>
  static HWY_INLINE BytesV Choose(const std::uint8_t* entries, BytesV index, BytesV low) {
    if constexpr (kEntries == 16) {
      return hn::TableLookupBytes(hn::LoadDup128(Bytes(), entries), low);
    } else {
      constexpr int kHalf = kEntries / 2;
      return hn::IfThenElse(hn::TestBit(index, hn::Set(Bytes(), kHalf)),
                            Choose<kHalf>(entries + kHalf, index, low), Choose<kHalf>(entries, index, low));
    }
  }
  alignas(16) std::uint8_t table[256];
};
#endif

}  // namespace HWY_NAMESPACE
}  // namespace zel
HWY_AFTER_NAMESPACE();

#endif
