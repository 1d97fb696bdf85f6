#include <gtest/gtest.h>

#include <climits>
#include <iterator>
#include <random>

#include "imaging/EachTarget.h"
#include "imaging/GuardedBytes.h"
#include "imaging/kernels/DotFilter.h"
#include "imaging/kernels/Resample.h"
#include "imaging/kernels/WhitePixels.h"
#include "imaging/reference/FilterReference.h"

namespace zel {
namespace {

using reference::Bytes;

class Filters : public EachTarget {
 protected:
  int Below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }

  // Dim noise with every eighth byte bright, so that each side of every test is taken.
  Bytes Noise(std::size_t size) {
    Bytes bytes(size);
    for (auto& b : bytes) b = static_cast<std::uint8_t>(Below(8) ? Below(60) : 100 + Below(156));
    return bytes;
  }

  std::mt19937 random_{20};
};
FOR_EACH_TARGET(Filters);

TEST_P(Filters, MosaicDefectsAsReference) {
  std::vector<int> widths{63, 64, 68, 69, 132, 200};
  for (int width = 1; width <= 21; ++width) widths.push_back(width);
  for (const int width : widths) {
    for (int height : {1, 2, 3, 4, 5, 6, 7, 8, 9, 33}) {
      SCOPED_TRACE(testing::Message() << width << " x " << height);
      const int pitch = width + Below(4), threshold = 1 + Below(height % 2 ? 120 : 255), mode = Below(4);
      Bytes expected = Noise(static_cast<std::size_t>(pitch * (height - 1) + width));
      GuardedBytes frame(expected, Below(2) ? GuardedBytes::Guard::Behind : GuardedBytes::Guard::Before);
      for (int row = 0; row < height; row += 5) {
        DotFilter(frame.data(), pitch, width, height, row, row + 5, threshold);
      }
      reference::DotFilter(expected, pitch, width, height, threshold);
      ASSERT_EQ(frame.Copy(), expected);

      // A shorter frame than its width promises: nothing behind its end is read.
      constexpr int kExtremes[] = {INT_MIN, -80'000'000, -1, 80'000'000, INT_MAX};
      const auto gain = [&] { return Below(3) ? Below(400) : kExtremes[Below(std::size(kExtremes))]; };
      const ColorGains gains{gain(), gain(), gain()};
      expected = Noise(static_cast<std::size_t>(std::max(1, width * height - (height > 8 ? Below(90) : 0))));
      GuardedBytes bright(expected);
      const int least = Below(8) ? threshold : 0;
      CancelWhitePixels(bright.data(), expected.size(), width, height, least, mode, gains);
      reference::CancelWhitePixels(expected, width, height, least, mode, gains);
      ASSERT_EQ(bright.Copy(), expected);
    }
  }
}

TEST_P(Filters, IsolatedPoints) {
  struct Dot {
    int size, expected;
  };
  // In the larger frame, places above and left of the point are replaced first and take part in its mean.
  for (const auto& [size, expected] : {Dot{5, 100}, Dot{9, 118}}) {
    Bytes dots(std::size_t(size) * size, 100);
    dots[std::size_t(size) * size / 2] = 250;
    DotFilter(dots.data(), size, size, size, 0, size, 15);
    EXPECT_EQ(dots[std::size_t(size) * size / 2], expected);
  }

  Bytes points(20 * 20, 10);
  points[10 * 20 + 10] = 250;
  const Bytes original = points;
  CancelWhitePixels(points.data(), points.size(), 20, 20, 50, 2, {10, 10, 10});
  EXPECT_EQ(points, original) << "too dark after the gains to look coloured";
  CancelWhitePixels(points.data(), points.size(), 20, 20, 50, 2, {});
  EXPECT_EQ(points, Bytes(20 * 20, 10));
}

TEST_P(Filters, ResampleAsReference) {
  // The last two are wider than 16.16 fixed point reaches in 32 bits.
  const int sizes[][4] = {{2, 2, 1, 1},   {2, 2, 7, 5},  {9, 7, 9, 7},      {31, 17, 11, 40},
                          {5, 64, 64, 5}, {3, 2, 1, 30}, {40000, 2, 33, 3}, {2, 40000, 3, 70000}};
  for (const auto& [sw, sh, dw, dh] : sizes) {
    SCOPED_TRACE(testing::Message() << sw << " x " << sh << " to " << dw << " x " << dh);
    const Bytes source = Noise(std::size_t(sw) * sh * 4);
    GuardedBytes guarded(source), result(Bytes(std::size_t(dw) * dh * 4));
    ResampleBilinear(guarded.data(), sw, sh, result.data(), dw, dh);
    ASSERT_EQ(result.Copy(), reference::Resample(source, sw, sh, dw, dh));
  }
}

// Rows are read in windows of two vectors for steps up to 2: every width that such windows just fit into,
// just do not, or end in, at steps around 1 and 2, with the last source row as the lower one.
TEST_P(Filters, ResampleAtTheEdgesOfItsWindows) {
  for (int sw = 2; sw <= 70; ++sw) {
    const Bytes source = Noise(std::size_t(sw) * 2 * 4);
    GuardedBytes behind(source), before(source, GuardedBytes::Guard::Before);
    for (int dw = 1; dw <= 40; ++dw) {
      if (sw > 40 && std::abs(2 * dw - sw) > 3 && std::abs(dw - sw) > 2) continue;
      const Bytes expected = reference::Resample(source, sw, 2, dw, 1);
      for (GuardedBytes* from : {&behind, &before}) {
        GuardedBytes result(Bytes(expected.size()));
        ResampleBilinear(from->data(), sw, 2, result.data(), dw, 1);
        ASSERT_EQ(result.Copy(), expected) << sw << " to " << dw;
      }
    }
  }
}

TEST_P(Filters, ResampleLeavesDegenerateSizesAlone) {
  GuardedBytes source(Bytes(64, 9));
  const int sizes[][4] = {{1, 8, 2, 2}, {8, 1, 2, 2}, {0, 4, 2, 2},
                          {4, 4, 0, 2}, {4, 4, 2, 0}, {4, 4, -2, 2}};
  for (const auto& [sw, sh, dw, dh] : sizes) {
    Bytes result(16, 77);
    ResampleBilinear(source.data(), sw, sh, result.data(), dw, dh);
    EXPECT_EQ(result, Bytes(16, 77)) << sw << " x " << sh << " to " << dw << " x " << dh;
  }
}

}  // namespace
}  // namespace zel
