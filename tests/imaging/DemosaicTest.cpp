#include <gtest/gtest.h>

#include "imaging/CFilterBayer.h"
#include "imaging/DirectPicture.h"
#include "imaging/EachTarget.h"
#include "imaging/GuardedBytes.h"
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
/// across several vectors. Frames end with their last needed sample.
template <class Check>
void ForEachFrame(Check check) {
  unsigned seed = 0;
  for (const int width : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 15, 16, 17, 31, 33, 40, 63, 64, 65, 130}) {
    for (const int height : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 17, 24, 40}) {
      for (int mode = 0; mode < 4 && !testing::Test::HasFatalFailure(); ++mode) {
        const int pitch = width + static_cast<int>(seed % 3);
        check(Size{width, height}, pitch, mode,
              RandomBytes(static_cast<std::size_t>(pitch * (height - 1) + width), seed));
        ++seed;
      }
      if (width > 40 && height == 10) break;
    }
  }
}

using Demosaic = EachTarget;
FOR_EACH_TARGET(Demosaic);

TEST_P(Demosaic, GradientAsReference) {
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
    GuardedBytes guarded(frame);
    filter.PrepareFrame(guarded.data(), pitch, frame.size());
    reference::Padded padded(frame, pitch, width, height);

    GuardedBytes out(Bytes(static_cast<std::size_t>(width * height * 4), 99));
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

void CheckDirect(Size size, int pitch, int mode, const Bytes& frame, const ColorGains& gains,
                 GuardedBytes::Guard guard) {
  const auto [width, height] = size;
  GuardedBytes guarded(frame, guard);
  for (const bool grey : {false, true}) {
    const Bytes before(static_cast<std::size_t>(width * height * 4), 99);
    GuardedBytes out(before);
    DirectPicture picture;
    PictureWriter writer;
    ASSERT_TRUE(picture.Allocate(width) && writer.Allocate(width));
    picture.Begin({guarded.data(), pitch, width, height, PhaseOfMode(mode)}, gains);
    writer.Begin({out.data(), width * 4, width, height, 4, grey}, {}, 0);
    for (int row = 0; row < height; row += 3) picture.WriteRows(row + 3, writer);
    if (width < 5 || height < 5) {
      ASSERT_EQ(out.Copy(), before);
      continue;
    }
    ASSERT_TRUE(SamePicture(out.data(), 4, reference::Direct(frame, pitch, width, height, mode, gains, grey),
                            width, height, mode));
  }
}

TEST_P(Demosaic, DirectAsReferenceInBands) {
  constexpr int kGains[] = {0, 90, 128, 140, 260, 2047, 2048, 70000, (1 << 19) - 1};
  unsigned round = 0;
  ForEachFrame([&](Size size, int pitch, int mode, const Bytes& frame) {
    const auto gain = [&](unsigned step) { return kGains[round * step % std::size(kGains)]; };
    const ColorGains gains{gain(1), gain(2), gain(4)};
    ++round;
    CheckDirect(size, pitch, mode, frame, gains,
                round % 2 ? GuardedBytes::Guard::Before : GuardedBytes::Guard::Behind);
  });
  // Rows that begin inside one another, so many that only the first lie at the frame's edge.
  for (const int pitch : {1, 2, 3}) {
    CheckDirect({5, 200}, pitch, pitch, RandomBytes(static_cast<std::size_t>(199 * pitch + 5), 1), {},
                GuardedBytes::Guard::Before);
  }
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
