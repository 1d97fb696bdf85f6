#include "imaging/PictureWriter.h"

#include <gtest/gtest.h>

#include <random>

#include "imaging/EachTarget.h"
#include "imaging/GuardedBytes.h"
#include "imaging/reference/DemosaicReference.h"
#include "imaging/reference/FilterReference.h"

namespace zel {
namespace {

using reference::Bytes;
using reference::RandomBytes;

class Writer : public EachTarget {
 protected:
  int Below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }

  /// Writes blue, green, red and compares with the references.
  void Check(int width, int height, int pixelBytes, bool grey, int sharpness, const PixelTones& tones,
             std::size_t skew = 0) {
    Bytes colors = RandomBytes(static_cast<std::size_t>(3 * width * height), random_());
    if (grey) {
      for (std::size_t i = 0; i < colors.size(); ++i) colors[i] = colors[i / 3 * 3];
    }
    const int stride = width * pixelBytes + pixelBytes * Below(3);
    GuardedBytes out(Bytes(skew + static_cast<std::size_t>(stride * (height - 1) + width * pixelBytes), 7));
    PictureWriter writer;
    ASSERT_TRUE(writer.Allocate(width));
    writer.Begin({out.data() + skew, stride, width, height, pixelBytes, grey}, tones, sharpness);
    for (int row = 0; row < height; ++row) {
      const PlaneRow planes = writer.NextRow();
      const std::uint8_t* from = &colors[static_cast<std::size_t>(3 * row * width)];
      for (int i = 0; i < width; ++i) {
        planes.blue[i] = from[3 * i];
        planes.green[i] = from[3 * i + 1];
        planes.red[i] = from[3 * i + 2];
      }
      writer.FinishRow();
    }
    if (!grey) {
      const auto factor = [](int gain) { return gain / 4096.0; };
      colors = reference::Toned(colors, {factor(tones.gains.r), factor(tones.gains.g), factor(tones.gains.b)},
                                tones.matrix, tones.gamma);
    }
    colors = reference::Sharpen(colors, width, height, sharpness);
    for (int row = 0; row < height; ++row) {
      ASSERT_TRUE(reference::SamePicture(
          out.data() + skew + row * stride, pixelBytes,
          Bytes(colors.begin() + 3 * row * width, colors.begin() + 3 * (row + 1) * width), width, 1, row));
    }
  }

  std::mt19937 random_{5};
};
FOR_EACH_TARGET(Writer);

TEST_P(Writer, SharpnessAndFormatsAsReference) {
  for (int round = 0; round < 400; ++round) {
    const int width = 1 + Below(round % 8 ? 20 : 200), height = 1 + Below(12);
    SCOPED_TRACE(testing::Message() << width << " x " << height);
    Check(width, height, 3 + Below(2), Below(3) == 0, Below(3) ? Below(257) : 0, {});
    if (HasFatalFailure()) return;
  }
}

TEST_P(Writer, TonesAsReference) {
  // Around the limits of the halves that gains are split into, and coefficients that leave 16 bits soonest.
  constexpr int kGains[] = {0,     1,     4095,  4096,   6000,          32767,
                            32768, 40000, 65536, 100000, (1 << 19) - 1, 1 << 19};
  constexpr int kCoefficients[] = {-32768, -5000, -64, -1, 0, 13, 64, 90, 16320, 32767};
  const Bytes gamma = RandomBytes(256, 3);
  for (int round = 0; round < 300; ++round) {
    const auto gain = [&] { return kGains[Below(std::size(kGains))]; };
    FixedColorMatrix matrix;
    for (auto& row : matrix.c) {
      for (std::int16_t& c : row) {
        c = static_cast<std::int16_t>(round % 2 ? kCoefficients[Below(std::size(kCoefficients))]
                                                : Below(200) - 60);
      }
    }
    const PixelTones tones{
        {gain(), gain(), gain()}, Below(3) ? &matrix : nullptr, Below(3) ? gamma.data() : nullptr};
    Check(1 + Below(150), 1 + Below(4), 4, false, 0, tones);
    if (HasFatalFailure()) return;
  }
}

// Large enough to go past the cache, with rows that begin anywhere in a cache line.
TEST_P(Writer, LargePictures) {
  Check(1601, 1400, 4, false, 0, {}, 4);
}

TEST(Kernels, TargetsOfThisProcessor) {
  std::string names;
  for (const std::int64_t target : Targets()) names += std::string(" ") + hwy::TargetName(target);
  std::printf("kernels run on:%s\n", names.c_str());
  EXPECT_FALSE(names.empty());
}

}  // namespace
}  // namespace zel
