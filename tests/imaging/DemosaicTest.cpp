#include <gtest/gtest.h>

#include "imaging/CFilterBayer.h"
#include "imaging/kernels/DirectDemosaic.h"
#include "imaging/reference/DemosaicReference.h"

namespace zel {
namespace {

using reference::Bytes;
using reference::RandomBytes;
using reference::SamePicture;

struct Size {
  int width, height;
};

/// Calls `check(size, pitch, mode, frame)` for a random frame of every size in every phase; the widest go
/// across the pieces that rows are cut into. Frames end with their last needed sample, so that the sanitizer
/// sees a read beyond it.
template <class Check>
void ForEachFrame(Check check) {
  unsigned seed = 0;
  for (const int width : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 15, 16, 17, 31, 33, 40, 511, 513, 1030}) {
    for (const int height : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 17, 24, 40}) {
      for (int mode = 0; mode < 4 && !testing::Test::HasFatalFailure(); ++mode) {
        const int pitch = width + static_cast<int>(seed % 3);
        check(Size{width, height}, pitch, mode,
              RandomBytes(static_cast<std::size_t>(pitch * (height - 1) + width), seed));
        ++seed;
      }
      if (width > 40 && height == 9) break;
    }
  }
}

TEST(CFilterBayer, GradientDemosaicAsReference) {
  int round = 0;
  ForEachFrame([&](Size size, int pitch, int mode, const Bytes& frame) {
    const auto [width, height] = size;
    CFilterBayer filter;
    ASSERT_TRUE(filter.Allocate(width, height));
    // Each phase meets, over the sizes, every combination of matrix and gamma.
    ++round;
    const bool withMatrix = round / 4 % 2 != 0, withGamma = round / 8 % 2 != 0;
    if (withMatrix) {
      filter.Matrix().SetSaturation(4);
      filter.Matrix().SetHue(25);
      filter.Matrix().SetBrightness(-12);
    }
    filter.BeginFrame(withGamma ? 45 : 0);
    Bytes gamma(256);
    for (int i = 0; i < 256; ++i) gamma[std::size_t(i)] = reference::Byte(255 * std::pow(i / 255.0, 0.45));
    filter.SetGains(150, 121, 400);
    filter.PrepareFrame(frame.data(), pitch, frame.size());
    reference::Padded padded(frame, pitch, width, height);

    Bytes out(static_cast<std::size_t>(width * height * 4), 99);
    filter.DemosaicColor(filter.WorkImage(), out.data(), width, mode);
    const FixedColorMatrix matrix = filter.Matrix().Product();
    ASSERT_EQ(matrix.active, withMatrix);
    ASSERT_TRUE(
        SamePicture(out.data(), 4,
                    reference::Gradient(padded, width, height, mode, {150 / 128.0, 121 / 128.0, 400 / 128.0},
                                        withMatrix ? &matrix : nullptr, withGamma ? gamma.data() : nullptr),
                    width, height, mode));

    filter.DemosaicMono(filter.WorkImage(), out.data(), width, mode);
    ASSERT_TRUE(SamePicture(out.data(), 4, reference::GradientGrey(padded, width, height, mode), width,
                            height, mode));
  });
}

TEST(DirectDemosaic, AsReferenceInBands) {
  ForEachFrame([](Size size, int pitch, int mode, const Bytes& frame) {
    const auto [width, height] = size;
    const ColorGains gains{90, 140, 260};
    for (const bool grey : {false, true}) {
      Bytes out(static_cast<std::size_t>(width * height * 4), 99);
      for (int row = 0; row < height; row += 3) {
        const int end = std::min(row + 3, height);
        if (grey) {
          DirectDemosaicGrey(frame.data(), pitch, width, height, PhaseOfMode(mode), row, end, out.data(),
                             width * 4);
        } else {
          DirectDemosaic(frame.data(), pitch, width, height, PhaseOfMode(mode), gains, row, end, out.data(),
                         width * 4);
        }
      }
      if (width < 5 || height < 5) {
        ASSERT_EQ(out, Bytes(out.size(), 99));
        continue;
      }
      ASSERT_TRUE(SamePicture(out.data(), 4,
                              reference::Direct(frame, pitch, width, height, mode, gains, grey), width,
                              height, mode));
    }
  });
}

TEST(CFilterBayer, GammaTables) {
  const struct {
    LONG gamma;
    std::uint8_t in, out;
  } kRows[] = {{0, 77, 77},   {-3, 77, 77},  {100, 77, 77}, {50, 64, 128}, {200, 128, 64},
               {120, 64, 49}, {250, 64, 49}, {1, 1, 241},   {1, 0, 0}};
  CFilterBayer filter;
  ASSERT_TRUE(filter.Allocate(8, 8));
  for (const auto& [gamma, in, out] : kRows) {
    const Bytes frame(64, in);
    Bytes pixels(256);
    filter.PrepareFrame(frame.data(), 0);
    filter.BeginFrame(gamma);
    filter.DemosaicColor(filter.WorkImage(), pixels.data(), 8, 0);
    EXPECT_TRUE(SamePicture(pixels.data(), 4, Bytes(192, out), 8, 8, 0)) << gamma;
  }
}

}  // namespace
}  // namespace zel
