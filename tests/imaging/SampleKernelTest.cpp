#include <gtest/gtest.h>

#include <cmath>

#include "imaging/kernels/Complementary.h"
#include "imaging/kernels/Luminance.h"
#include "imaging/kernels/Samples.h"
#include "imaging/kernels/Yuv.h"
#include "imaging/reference/DemosaicReference.h"

namespace zel {
namespace {

using reference::Byte;
using reference::Bytes;
using reference::RandomBytes;

TEST(Samples, PackInPlaceAcrossPieces) {
  for (const std::size_t count : {1u, 2u, 1023u, 1024u, 1025u, 5000u}) {
    const Bytes samples = RandomBytes(2 * count, unsigned(count));
    Bytes tenBit = samples, low = samples;
    PackTenBit(tenBit.data(), count, tenBit.data());
    PackLowByte(low.data(), count, low.data());
    for (std::size_t i = 0; i < count; ++i) {
      ASSERT_EQ(tenBit[i], (samples[2 * i] + 256 * samples[2 * i + 1]) / 4 % 256) << i << " of " << count;
      ASSERT_EQ(low[i], samples[2 * i]) << i << " of " << count;
    }
  }
}

TEST(Samples, TwoTapRows) {
  const struct {
    std::size_t sampleBytes;
    Bytes row, sorted;
  } kRows[] = {
      {1, {7}, {7}},
      {1, {1, 2}, {1, 2}},
      {1, {1, 2, 3, 4, 5}, {1, 3, 3, 4, 2}},
      {1, {1, 2, 3, 4, 5, 6}, {1, 3, 5, 6, 4, 2}},
      {2, {1, 91, 2, 92, 3, 93, 4, 94}, {1, 91, 3, 93, 4, 94, 2, 92}},
  };
  for (const auto& [sampleBytes, row, sorted] : kRows) {
    Bytes actual = row, scratch(row.size());
    SortTwoTapRow(actual.data(), row.size() / sampleBytes, sampleBytes, scratch.data());
    EXPECT_EQ(actual, sorted);
  }
}

TEST(Yuv, EveryEntryAsTheFormula) {
  Bytes row(4 * 128), pixels(4 * 256);
  for (int u = 0; u < 256; ++u) {
    for (int v = 0; v < 256; ++v) {
      for (std::size_t y = 0; y < 256; ++y) row[2 * y] = static_cast<std::uint8_t>(y);
      for (std::size_t i = 0; i < 128; ++i) {
        row[4 * i + 1] = static_cast<std::uint8_t>(u);
        row[4 * i + 3] = static_cast<std::uint8_t>(v);
      }
      YuvToPixels(row.data(), 128, pixels.data());
      for (int y = 0; y < 256; ++y) {
        // Whole numerators, so that a tie is exactly a half.
        const std::uint8_t* p = &pixels[static_cast<std::size_t>(4 * y)];
        const bool same = p[0] == Byte((1000 * y + 1772 * (u - 128)) / 1000.0) &&
                          p[1] == Byte((100000 * y - 34414 * (u - 128) - 71414 * (v - 128)) / 100000.0) &&
                          p[2] == Byte((100 * y + 114 * (v - 128)) / 100.0) && p[3] == 255;
        ASSERT_TRUE(same) << y << " " << u << " " << v << ": " << int{p[0]} << " " << int{p[1]} << " "
                          << int{p[2]};
      }
    }
  }
}

TEST(Luminance, RoundsEachPixel) {
  // Blue, green, red 10, 20, 30 is 21.85; 1, 0, 1 is 0.413.
  const Bytes bgra{10, 20, 30, 255, 1, 0, 1, 255}, bgr{10, 20, 30, 1, 0, 1};
  EXPECT_EQ(SumLuminance(bgra.data(), 2, 4), 22u);
  EXPECT_EQ(SumLuminance(bgr.data(), 2, 3), 22u);
}

TEST(Complementary, AsReferenceAndInsideTheFrame) {
  for (int size = 1; size <= 63; ++size) {
    const int width = 1 + size % 9, height = 1 + size / 9, pitch = width + height % 2;
    const Bytes frame = RandomBytes(static_cast<std::size_t>(pitch * height), unsigned(size));
    Bytes out(static_cast<std::size_t>(width * height * 4), 7), expected = out;
    DecodeComplementary(frame.data(), frame.size(), std::size_t(pitch), width, 0, height - 1, 4, out.data(),
                        width * 4);
    for (int row = 0; row + 1 < height; ++row) {
      for (int column = 1; column < width; ++column) {
        if ((row + 1) * pitch + column + 1 >= pitch * height) continue;
        int names[4];  // a, b, c, d by the parities of where the sample lies
        for (int i = 0; i < 4; ++i) {
          const int r = row + i / 2, c = column + i % 2;
          names[(r & 1) * 2 + (c & 1)] = frame[static_cast<std::size_t>(r * pitch + c)];
        }
        const auto [a, b, c, d] = names;
        const int y = (a + b + c + d) / 4, u = std::max(0, d + b - c - a), v = std::max(0, d + a - c - b);
        std::uint8_t* p = &expected[static_cast<std::size_t>((row * width + column) * 4)];
        p[0] = Byte((1000 * y + 2032 * u) / 1000.0);
        p[1] = Byte((1000 * y - 395 * u - 581 * v) / 1000.0);
        p[2] = Byte((100 * y + 114 * v) / 100.0);
      }
    }
    ASSERT_EQ(out, expected) << width << " x " << height;
  }
}

}  // namespace
}  // namespace zel
