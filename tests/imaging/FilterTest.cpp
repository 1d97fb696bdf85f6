#include <gtest/gtest.h>

#include <random>

#include "imaging/kernels/DotFilter.h"
#include "imaging/kernels/Resample.h"
#include "imaging/kernels/Sharpness.h"
#include "imaging/kernels/WhitePixels.h"
#include "imaging/reference/FilterReference.h"

namespace zel {
namespace {

using reference::Bytes;

class Filters : public testing::Test {
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

TEST_F(Filters, MosaicDefectsAsReference) {
  for (int width = 1; width <= 21; ++width) {
    for (int height : {1, 2, 3, 4, 5, 6, 7, 8, 9, 33}) {
      SCOPED_TRACE(testing::Message() << width << " x " << height);
      const int pitch = width + Below(4), threshold = 1 + Below(120), mode = Below(4);
      Bytes frame = Noise(static_cast<std::size_t>(pitch * height)), expected = frame;
      DotFilter(frame.data(), pitch, width, height, threshold);
      reference::DotFilter(expected, pitch, width, height, threshold);
      ASSERT_EQ(frame, expected);

      // A shorter frame than its width promises: nothing behind its end is read (or the sanitizer tells).
      const ColorGains gains{Below(400), Below(400), Below(400)};
      frame = expected =
          Noise(static_cast<std::size_t>(std::max(1, width * height - (height > 8 ? Below(90) : 0))));
      CancelWhitePixels(frame.data(), frame.size(), width, height, threshold, mode, gains);
      reference::CancelWhitePixels(expected, width, height, threshold, mode, gains);
      ASSERT_EQ(frame, expected);
    }
  }
}

TEST_F(Filters, IsolatedPoints) {
  struct Dot {
    int size, expected;
  };
  // In the larger frame, places above and left of the point are replaced first and take part in its mean.
  for (const auto& [size, expected] : {Dot{5, 100}, Dot{9, 118}}) {
    Bytes dots(std::size_t(size) * size, 100);
    dots[std::size_t(size) * size / 2] = 250;
    DotFilter(dots.data(), size, size, size, 15);
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

TEST_F(Filters, SharpnessAsReference) {
  for (int size = 1; size <= 19; ++size) {
    const int width = size, height = 1 + Below(19), stride = width * 4 + 4 * Below(3),
              strength = 1 + Below(256);
    SCOPED_TRACE(testing::Message() << width << " x " << height);
    std::vector<std::int32_t> table(512);
    for (int i = 0; i < 512; ++i) table[i] = (i - 255) * strength / 10;
    Bytes picture = Noise(static_cast<std::size_t>(stride * height)), scratch(picture.size());
    const Bytes expected = reference::Sharpen(picture, width, height, stride, table);
    Sharpen(picture.data(), width, height, stride, table.data(), scratch.data());
    ASSERT_EQ(picture, expected);
  }
}

TEST_F(Filters, ResampleAsReference) {
  // The last two are wider than 16.16 fixed point reaches in 32 bits.
  const int sizes[][4] = {{2, 2, 1, 1},   {2, 2, 7, 5},  {9, 7, 9, 7},      {31, 17, 11, 40},
                          {5, 64, 64, 5}, {3, 2, 1, 30}, {40000, 2, 33, 3}, {2, 40000, 3, 70000}};
  for (const auto& [sw, sh, dw, dh] : sizes) {
    SCOPED_TRACE(testing::Message() << sw << " x " << sh << " to " << dw << " x " << dh);
    const Bytes source = Noise(std::size_t(sw) * sh * 4);
    Bytes result(std::size_t(dw) * dh * 4);
    ResampleBilinear(source.data(), sw, sh, result.data(), dw, dh);
    ASSERT_EQ(result, reference::Resample(source, sw, sh, dw, dh));
  }
}

TEST_F(Filters, ResampleLeavesDegenerateSizesAlone) {
  const Bytes source(64, 9);
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
