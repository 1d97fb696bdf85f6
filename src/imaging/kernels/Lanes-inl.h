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
#include <cstring>

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

/// Words limited to 0..255, as bytes: in each block of 16, those of `a`, then those of `b`. Highway has this
/// only from 1.0.4 on.
HWY_INLINE BytesV PackLimited(WordsV a, WordsV b) {
#if HWY_TARGET == HWY_EMU128
  const hn::Half<Bytes> half;
  return hn::Combine(Bytes(), hn::DemoteTo(half, b), hn::DemoteTo(half, a));
#elif HWY_MAX_BYTES == 16
  return BytesV{_mm_packus_epi16(a.raw, b.raw)};
#elif HWY_MAX_BYTES == 32
  return BytesV{_mm256_packus_epi16(a.raw, b.raw)};
#else
  return BytesV{_mm512_packus_epi16(a.raw, b.raw)};
#endif
}
/// `Merge` of words that are limited to 0..255 first.
HWY_INLINE BytesV MergeLimited(WordsV evens, WordsV odds) {
  alignas(64) static constexpr std::uint8_t kOrder[64] = {
      0, 8,  1, 9,  2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15, 0, 8,  1, 9,  2, 10,
      3, 11, 4, 12, 5, 13, 6, 14, 7, 15, 0, 8,  1, 9,  2, 10, 3, 11, 4, 12, 5, 13,
      6, 14, 7, 15, 0, 8,  1, 9,  2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15};
  return hn::TableLookupBytes(PackLimited(evens, odds), hn::Load(Bytes(), kOrder));
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

/// Rearranges lanes of `Part` so that interleaving, which works in blocks of 16 bytes, gives whole vectors in
/// order: part k of each block is then what the k-th vector needs.
template <class Part>
HWY_INLINE BytesV SpreadOverBlocks(BytesV v) {
  constexpr std::size_t kBlocks = hn::MaxLanes(Bytes()) / 16, kParts = 16 / sizeof(Part);
  if constexpr (kBlocks == 1) {
    return v;
  } else {
    const hn::ScalableTag<Part> d;
    const hn::RebindToSigned<decltype(d)> indices;
    alignas(64) hn::TFromD<decltype(indices)> order[kBlocks * kParts];
    for (std::size_t i = 0; i < kBlocks * kParts; ++i) {
      order[i] = static_cast<hn::TFromD<decltype(indices)>>(i % kParts * kBlocks + i / kParts);
    }
    return hn::BitCast(Bytes(), hn::TableLookupLanes(hn::BitCast(d, v), hn::SetTableIndices(d, order)));
  }
}

/// Four vectors of 32-bit pixels in order.
struct Pixels {
  BytesV part[4];
};
HWY_INLINE Pixels Interleaved(BytesV blue, BytesV green, BytesV red, BytesV alpha) {
  const auto b = SpreadOverBlocks<std::uint32_t>(blue), g = SpreadOverBlocks<std::uint32_t>(green),
             r = SpreadOverBlocks<std::uint32_t>(red), a = alpha;
  const UnsignedWords d;
  const auto low = [&](BytesV x, BytesV y)
                       HWY_ATTR { return hn::BitCast(d, hn::InterleaveLower(Bytes(), x, y)); };
  const auto high = [&](BytesV x, BytesV y)
                        HWY_ATTR { return hn::BitCast(d, hn::InterleaveUpper(Bytes(), x, y)); };
  const auto bg0 = low(b, g), bg1 = high(b, g), ra0 = low(r, a), ra1 = high(r, a);
  const auto pixels = [&](auto v) HWY_ATTR { return hn::BitCast(Bytes(), v); };
  return {{pixels(hn::InterleaveLower(d, bg0, ra0)), pixels(hn::InterleaveUpper(d, bg0, ra0)),
           pixels(hn::InterleaveLower(d, bg1, ra1)), pixels(hn::InterleaveUpper(d, bg1, ra1))}};
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
  explicit ByteTable(const std::uint8_t* entries) { std::memcpy(table, entries, sizeof table); }
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
