#include "imaging/kernels/FocusRows.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/FocusRows.cpp"
#include <hwy/foreach_target.h>

#include "imaging/kernels/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace zel {
namespace HWY_NAMESPACE {
namespace {

using OneLane = hn::CappedTag<std::int32_t, 1>;

/// Runs `body(tag, place)` over the places from `first` to before `last`: whole vectors, then single lanes.
template <class Body>
HWY_INLINE void OverLanes(int first, int last, const Body& body) {
  constexpr int kStep = static_cast<int>(hn::MaxLanes(Dwords()));
  int place = first;
  for (; place + kStep <= last; place += kStep) body(Dwords(), place);
  for (; place < last; ++place) body(OneLane(), place);
}

template <class D>
HWY_INLINE hn::Vec<D> LoadGrey(D d, const std::uint32_t* values) {
  return hn::LoadU(d, reinterpret_cast<const std::int32_t*>(values));
}
template <class D>
HWY_INLINE void StoreGrey(hn::Vec<D> v, D d, std::uint32_t* values) {
  hn::StoreU(v, d, reinterpret_cast<std::int32_t*>(values));
}

/// The nine values around a place, row by row.
template <class D>
struct Near {
  using V = hn::Vec<D>;
  HWY_INLINE Near(D d, const FocusRows& rows, int place)
      : a{LoadGrey(d, rows.above + place - 1), LoadGrey(d, rows.above + place),
          LoadGrey(d, rows.above + place + 1)},
        b{LoadGrey(d, rows.row + place - 1), LoadGrey(d, rows.row + place),
          LoadGrey(d, rows.row + place + 1)},
        c{LoadGrey(d, rows.below + place - 1), LoadGrey(d, rows.below + place),
          LoadGrey(d, rows.below + place + 1)} {}
  V a[3], b[3], c[3];
};

template <class V>
HWY_INLINE void Order(V& smaller, V& larger) {
  const V least = hn::Min(smaller, larger);
  larger = hn::Max(smaller, larger);
  smaller = least;
}
template <class V>
HWY_INLINE void OrderThree(V (&v)[3]) {
  Order(v[0], v[1]);
  Order(v[1], v[2]);
  Order(v[0], v[1]);
}

void MedianRow(const FocusRows& rows, std::uint32_t* out) {
  OverLanes(1, rows.width - 1, [&](auto d, int place) HWY_ATTR {
    Near<decltype(d)> near(d, rows, place);
    OrderThree(near.a);
    OrderThree(near.b);
    OrderThree(near.c);
    // The median is that of the largest of the smallest, the median of the middle ones and the smallest of
    // the largest.
    Order(near.b[1], near.c[1]);
    hn::Vec<decltype(d)> candidates[3] = {hn::Max(near.a[0], hn::Max(near.b[0], near.c[0])),
                                          hn::Max(near.b[1], hn::Min(near.a[1], near.c[1])),
                                          hn::Min(near.a[2], hn::Min(near.b[2], near.c[2]))};
    OrderThree(candidates);
    StoreGrey(candidates[1], d, out + place);
  });
}

void GreyRow(const std::uint8_t* pixels, int count, std::uint32_t* grey) {
  OverLanes(0, count, [&](auto d, int place) HWY_ATTR {
    const hn::Repartition<std::uint8_t, decltype(d)> bytes;
    const auto pixel = hn::BitCast(d, hn::LoadU(bytes, pixels + 4 * std::ptrdiff_t{place}));
    const auto low = hn::Set(d, 255);
    const auto blue = hn::Mul(hn::And(pixel, low), hn::Set(d, 117));
    const auto green = hn::Mul(hn::And(hn::ShiftRight<8>(pixel), low), hn::Set(d, 601));
    const auto red = hn::Mul(hn::And(hn::ShiftRight<16>(pixel), low), hn::Set(d, 306));
    StoreGrey(hn::ShiftRight<10>(hn::Add(hn::Add(blue, green), red)), d, grey + place);
  });
}

template <class D>
HWY_INLINE hn::Vec<D> Sobel(D d, const Near<D>& n) {
  const auto gx = hn::Add(hn::Add(hn::Sub(n.a[2], n.a[0]), hn::Sub(n.c[2], n.c[0])),
                          hn::ShiftLeft<1>(hn::Sub(n.b[2], n.b[0])));
  const auto gy = hn::Add(hn::Add(hn::Sub(n.c[0], n.a[0]), hn::Sub(n.c[2], n.a[2])),
                          hn::ShiftLeft<1>(hn::Sub(n.c[1], n.a[1])));
  // Below 2^21, where single precision rounds every root to the same whole number as double precision.
  const hn::Rebind<float, D> df;
  const auto squares = hn::ConvertTo(df, hn::Add(hn::Mul(gx, gx), hn::Mul(gy, gy)));
  return hn::ConvertTo(d, hn::Add(hn::Sqrt(squares), hn::Set(df, 0.5f)));
}

template <class D>
HWY_INLINE hn::Vec<D> LeftLaplacian(D d, const Near<D>& n) {
  const auto corners = hn::Add(n.a[0], n.c[0]);
  const auto upright = hn::Mul(hn::Add(n.a[1], n.c[1]), hn::Set(d, 5));
  const auto middle = hn::ShiftLeft<2>(hn::Sub(n.b[0], hn::ShiftLeft<2>(n.b[1])));
  return hn::Abs(hn::Add(hn::Add(corners, upright), middle));
}

template <class Respond>
HWY_INLINE void EachResponse(const FocusRows& rows, std::int32_t* out, const Respond& respond) {
  OverLanes(2, rows.width - 2, [&](auto d, int place) HWY_ATTR {
    hn::StoreU(respond(d, Near<decltype(d)>(d, rows, place)), d, out + place);
  });
}

void ResponseRow(const FocusRows& rows, FocusFilter filter, std::int32_t mean, std::int32_t* out) {
  switch (filter) {
    case FocusFilter::Sobel:
      return EachResponse(rows, out, [](auto d, const auto& near) HWY_ATTR { return Sobel(d, near); });
    case FocusFilter::Laplacian:
      return EachResponse(rows, out,
                          [](auto d, const auto& near) HWY_ATTR { return LeftLaplacian(d, near); });
    case FocusFilter::Deviation:
      return EachResponse(rows, out, [mean](auto d, const auto& near) HWY_ATTR {
        return hn::Mul(hn::Abs(hn::Sub(near.b[1], hn::Set(d, mean))), hn::Set(d, 5));
      });
  }
  EachResponse(rows, out, [](auto d, const auto&) HWY_ATTR { return hn::Zero(d); });
}

/// Of at most 2^20 values: the sum fits into 32 bits.
GreySums SumGreater(const std::uint32_t* values, int count, std::int32_t limit) {
  constexpr int kStep = static_cast<int>(hn::MaxLanes(Dwords()));
  const Dwords d;
  const auto limits = hn::Set(d, limit);
  auto sums = hn::Zero(d), counts = sums;
  int place = 0;
  for (; place + kStep <= count; place += kStep) {
    const auto value = LoadGrey(d, values + place);
    const auto isGreater = hn::Gt(value, limits);
    sums = hn::Add(sums, hn::IfThenElseZero(isGreater, value));
    counts = hn::Sub(counts, hn::VecFromMask(d, isGreater));
  }
  GreySums total{hn::GetLane(hn::SumOfLanes(d, sums)), hn::GetLane(hn::SumOfLanes(d, counts))};
  for (; place < count; ++place) {
    const auto value = static_cast<std::int32_t>(values[place]);
    if (value <= limit) continue;
    total.sum += value;
    ++total.count;
  }
  return total;
}

std::int32_t LargestValue(const std::int32_t* values, int count) {
  constexpr int kStep = static_cast<int>(hn::MaxLanes(Dwords()));
  const Dwords d;
  auto largest = hn::Zero(d);
  int place = 0;
  for (; place + kStep <= count; place += kStep) largest = hn::Max(largest, hn::LoadU(d, values + place));
  std::int32_t result = hn::GetLane(hn::MaxOfLanes(d, largest));
  for (; place < count; ++place) result = std::max(result, values[place]);
  return result;
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace zel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zel {

HWY_EXPORT(GreyRow);
HWY_EXPORT(MedianRow);
HWY_EXPORT(ResponseRow);
HWY_EXPORT(SumGreater);
HWY_EXPORT(LargestValue);

void GreyOfPixels(const std::uint8_t* pixels, int count, std::uint32_t* grey) {
  HWY_DYNAMIC_DISPATCH(GreyRow)(pixels, count, grey);
}

void MedianOfRows(const FocusRows& rows, std::uint32_t* out) {
  HWY_DYNAMIC_DISPATCH(MedianRow)(rows, out);
}

void FocusResponses(const FocusRows& rows, FocusFilter filter, std::int32_t mean, std::int32_t* out) {
  HWY_DYNAMIC_DISPATCH(ResponseRow)(rows, filter, mean, out);
}

GreySums SumOfGreater(const std::uint32_t* values, int count, std::int32_t limit) {
  constexpr int kPiece = 1 << 20;
  GreySums total;
  for (int i = 0; i < count; i += kPiece) {
    const GreySums piece = HWY_DYNAMIC_DISPATCH(SumGreater)(values + i, std::min(kPiece, count - i), limit);
    total.sum += piece.sum;
    total.count += piece.count;
  }
  return total;
}

std::int32_t LargestOf(const std::int32_t* values, int count) {
  return HWY_DYNAMIC_DISPATCH(LargestValue)(values, count);
}

}  // namespace zel
#endif
