#include "imaging/kernels/FocusRows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "imaging/EachTarget.h"
#include "imaging/GuardedBytes.h"

namespace zel {
namespace {

using Row = std::vector<std::uint32_t>;
constexpr std::int32_t kUntouched = -77;

class FocusRowKernels : public EachTarget {
 protected:
  std::mt19937 random{1};
  Row RandomRow(int width, unsigned bright = 255) {
    Row row(static_cast<std::size_t>(width));
    for (auto& value : row) value = random() % (bright + 1);
    return row;
  }
};
FOR_EACH_TARGET(FocusRowKernels);

/// A row whose end nobody may pass.
class GuardedRow {
 public:
  explicit GuardedRow(const Row& row) : bytes_(Bytes(row)) {}
  const std::uint32_t* data() { return reinterpret_cast<const std::uint32_t*>(bytes_.data()); }

 private:
  static std::vector<std::uint8_t> Bytes(const Row& row) {
    std::vector<std::uint8_t> bytes(row.size() * 4);
    if (!row.empty()) std::memcpy(bytes.data(), row.data(), bytes.size());
    return bytes;
  }
  GuardedBytes bytes_;
};

std::int32_t Response(const std::array<Row, 3>& rows, int x, int filter, std::int32_t mean) {
  const auto at = [&](int dy, int dx) { return static_cast<std::int32_t>(rows.at(dy + 1).at(x + dx)); };
  if (filter == 2) return std::abs(at(0, 0) - mean) * 5;
  if (filter == 1)
    return std::abs(at(-1, -1) + 4 * at(-1, 0) + at(-1, 0) + 4 * at(0, -1) - 20 * at(0, 0) + 4 * at(0, 0) +
                    at(1, -1) + 4 * at(1, 0) + at(1, 0));
  if (filter != 0) return 0;
  const int gx = at(-1, 1) + 2 * at(0, 1) + at(1, 1) - at(-1, -1) - 2 * at(0, -1) - at(1, -1);
  const int gy = at(1, -1) + 2 * at(1, 0) + at(1, 1) - at(-1, -1) - 2 * at(-1, 0) - at(-1, 1);
  return static_cast<std::int32_t>(std::floor(std::sqrt(static_cast<double>(gx * gx + gy * gy)) + 0.5));
}

TEST_P(FocusRowKernels, MediansAndResponsesOfRandomRows) {
  for (int round = 0; round < 300; ++round) {
    const int width = round % 75;
    SCOPED_TRACE(testing::Message() << "width " << width << ", round " << round);
    const unsigned bright = round % 3 == 0 ? 1 : 255;  // many equal values, or few
    const std::array<Row, 3> rows{RandomRow(width, bright), RandomRow(width, bright),
                                  RandomRow(width, bright)};
    GuardedRow above(rows[0]), row(rows[1]), below(rows[2]);
    const FocusRows all{above.data(), row.data(), below.data(), width};

    Row medians(static_cast<std::size_t>(width), 999), expected = medians;
    for (int x = 1; x < width - 1; ++x) {
      Row near;
      for (const Row& r : rows) near.insert(near.end(), r.begin() + x - 1, r.begin() + x + 2);
      std::nth_element(near.begin(), near.begin() + 4, near.end());
      expected[x] = near[4];
    }
    MedianOfRows(all, medians.data());
    ASSERT_EQ(medians, expected);

    const auto mean = static_cast<std::int32_t>(random() % 256);
    for (const int filter : {0, 1, 2, 3}) {
      std::vector<std::int32_t> responses(static_cast<std::size_t>(width), kUntouched), wanted = responses;
      for (int x = 2; x < width - 2; ++x) wanted[x] = Response(rows, x, filter, mean);
      FocusResponses(all, static_cast<FocusFilter>(filter), mean, responses.data());
      ASSERT_EQ(responses, wanted) << "filter " << filter;
    }
  }
}

TEST_P(FocusRowKernels, SobelRoundsLikeDoublePrecision) {
  std::array<Row, 3> rows{Row(6), Row(6), Row(6)};
  for (std::uint32_t a = 0; a < 256; ++a) {
    for (std::uint32_t b = 0; b < 256; ++b) {
      rows[2][1] = rows[2][2] = rows[1][1] = a;
      rows[2][3] = b;
      rows[0][2] = a / 2 + b / 2;
      std::int32_t out[6];
      FocusResponses({rows[0].data(), rows[1].data(), rows[2].data(), 6}, FocusFilter::Sobel, 0, out);
      ASSERT_EQ(out[2], Response(rows, 2, 0, 0)) << a << ' ' << b;
      ASSERT_EQ(out[3], Response(rows, 3, 0, 0)) << a << ' ' << b;
    }
  }
}

/// What the kernel relies on, for every sum of two squared gradients.
TEST(FocusRows, SinglePrecisionHoldsEveryRoot) {
  constexpr int kLargest = 2 * 1020 * 1020;
  for (int squares = 0; squares <= kLargest; ++squares) {
    const auto exact = static_cast<int>(std::sqrt(static_cast<double>(squares)) + 0.5);
    ASSERT_EQ(static_cast<int>(std::sqrt(static_cast<float>(squares)) + 0.5f), exact) << squares;
  }
}

TEST_P(FocusRowKernels, GreyAndSums) {
  for (int count = 0; count < 150; ++count) {
    SCOPED_TRACE(count);
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(count) * 4);
    for (auto& byte : pixels) byte = static_cast<std::uint8_t>(count % 7 == 0 ? 255 : random());
    GuardedBytes guarded(pixels);
    Row grey(static_cast<std::size_t>(count)), expected;
    for (int i = 0; i < count; ++i)
      expected.push_back((117u * pixels[4 * i] + 601u * pixels[4 * i + 1] + 306u * pixels[4 * i + 2]) >> 10);
    GreyOfPixels(guarded.data(), count, grey.data());
    ASSERT_EQ(grey, expected);

    GuardedRow row(grey);
    for (const std::int32_t limit : {-1, 0, 63, 254, 255}) {
      std::int64_t sum = 0, greater = 0;
      std::int32_t largest = 0;
      for (const std::uint32_t value : grey) {
        const auto v = static_cast<std::int32_t>(value);
        largest = std::max(largest, v);
        if (v <= limit) continue;
        sum += v;
        ++greater;
      }
      const GreySums sums = SumOfGreater(row.data(), count, limit);
      ASSERT_EQ(sums.sum, sum);
      ASSERT_EQ(sums.count, greater);
      ASSERT_EQ(LargestOf(reinterpret_cast<const std::int32_t*>(row.data()), count), largest);
    }
  }
  // More than a lane of 32 bits holds.
  const Row white(10'000'019, 255);
  EXPECT_EQ(SumOfGreater(white.data(), static_cast<int>(white.size()), 0).sum,
            255 * std::int64_t{10'000'019});
}

}  // namespace
}  // namespace zel
