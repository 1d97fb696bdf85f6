#include "imaging/kernels/DotFilter.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/DotFilter.cpp"
#include <hwy/foreach_target.h>

#include "imaging/kernels/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace zel {
namespace HWY_NAMESPACE {
namespace {

/// Whole vectors of columns from `column` on; returns the first one left over.
///
/// A sample's left neighbour must be the filtered one, which usually lies in the same vector. So the vector
/// is filtered as if no neighbour changed, and again with what that gave, until nothing changes any more:
/// then every sample has seen its final neighbour. Most vectors have no dot and are done at once.
template <class D>
HWY_INLINE int FilterColumns(D d, std::uint8_t* line, std::ptrdiff_t pitch, int column, int end,
                             int threshold) {
  const int step = static_cast<int>(hn::Lanes(d));
  const auto limit = hn::Set(d, static_cast<std::uint8_t>(threshold));
  for (; column + step <= end; column += step) {
    std::uint8_t* p = line + column;
    const auto original = hn::LoadU(d, p), right = hn::LoadU(d, p + 2);
    const auto above = hn::LoadU(d, p - 2 * pitch), below = hn::LoadU(d, p + 2 * pitch);
    auto current = original;
    while (true) {
      const auto mean = MeanOfFour(hn::LoadU(d, p - 2), right, above, below);
      const auto difference = hn::Sub(hn::Max(original, mean), hn::Min(original, mean));
      const auto isDot = hn::Eq(hn::Max(difference, limit), difference);
      const auto next = hn::IfThenElse(isDot, mean, original);
      if (hn::AllTrue(d, hn::Eq(next, current))) break;
      hn::StoreU(next, d, p);
      current = next;
    }
  }
  return column;
}

void DotFilter(std::uint8_t* frame, std::ptrdiff_t pitch, int width, int height, int firstRow, int endRow,
               int threshold) {
  const int end = width - 2;
  for (int row = std::max(firstRow, 2); row < std::min(endRow, height - 2); ++row) {
    std::uint8_t* line = frame + row * pitch;
    int column = FilterColumns(Bytes(), line, pitch, 2, end, threshold);
    column = FilterColumns(hn::CappedTag<std::uint8_t, 16>(), line, pitch, column, end, threshold);
    column = FilterColumns(hn::CappedTag<std::uint8_t, 4>(), line, pitch, column, end, threshold);
    FilterColumns(hn::CappedTag<std::uint8_t, 1>(), line, pitch, column, end, threshold);
  }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace zel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zel {

HWY_EXPORT(DotFilter);

void DotFilter(std::uint8_t* frame, std::ptrdiff_t pitch, int width, int height, int firstRow, int endRow,
               int threshold) {
  HWY_DYNAMIC_DISPATCH(DotFilter)(frame, pitch, width, height, firstRow, endRow, threshold);
}

}  // namespace zel
#endif
