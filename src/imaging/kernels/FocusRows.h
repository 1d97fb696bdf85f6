#pragma once

#include <cstdint>

namespace zel {

enum class FocusFilter : std::int32_t { Sobel = 0, Laplacian = 1, Deviation = 2 };

/// Three rows of a block of grey values 0..255, `width` values each.
struct FocusRows {
  const std::uint32_t* above;
  const std::uint32_t* row;
  const std::uint32_t* below;
  int width;
};

/// Grey of `count` blue, green, red, alpha pixels: (117 B + 601 G + 306 R) >> 10.
void GreyOfPixels(const std::uint8_t* pixels, int count, std::uint32_t* grey);

/// Medians of 3 x 3 values, written to the columns 1 to width - 2 of `out`.
void MedianOfRows(const FocusRows& rows, std::uint32_t* out);

/// Filter responses of the columns 2 to width - 3, written there. The Laplacian is the 3 x 3 kernel 1 4 1,
/// 4 -20 4, 1 4 1 with what belongs to the right column taken from the middle one: the thresholds of the
/// search are tuned to that. The deviation is five times that from `mean`. An unknown filter responds with 0.
void FocusResponses(const FocusRows& rows, FocusFilter filter, std::int32_t mean, std::int32_t* out);

struct GreySums {
  std::int64_t sum = 0;
  std::int64_t count = 0;
};
/// Sum and number of the grey values that are greater than `limit`.
GreySums SumOfGreater(const std::uint32_t* values, int count, std::int32_t limit);

/// The largest of values that are not negative; 0 when there is none.
std::int32_t LargestOf(const std::int32_t* values, int count);

}  // namespace zel
