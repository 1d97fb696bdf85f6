#include <gtest/gtest.h>

#include <cmath>

#include "imaging/EachTarget.h"
#include "imaging/GuardedBytes.h"
#include "imaging/kernels/Complementary.h"
#include "imaging/kernels/Luminance.h"
#include "imaging/kernels/MosaicSums.h"
#include "imaging/kernels/Pixels.h"
#include "imaging/kernels/Samples.h"
#include "imaging/kernels/Yuv.h"
#include "imaging/reference/DemosaicReference.h"

namespace zel {
namespace {

using reference::Byte;
using reference::Bytes;
using reference::RandomBytes;

using Samples = EachTarget;
FOR_EACH_TARGET(Samples);

constexpr std::size_t kCounts[] = {1, 2, 3, 15, 16, 17, 31, 33, 63, 64, 65, 127, 128, 129, 200, 1025};

TEST_P(Samples, PackedInPlaceAndThroughTables) {
  for (const std::size_t count : kCounts) {
    const Bytes samples = RandomBytes(2 * count, unsigned(count)), table = RandomBytes(256, 1);
    GuardedBytes tenBit(samples), low(samples), mapped(samples);
    PackTenBit(tenBit.data(), count, tenBit.data());
    PackLowByte(low.data(), count, low.data());
    ApplyTable(mapped.data(), 2 * count, table.data());
    for (std::size_t i = 0; i < count; ++i) {
      ASSERT_EQ(tenBit.data()[i], (samples[2 * i] + 256 * samples[2 * i + 1]) / 4 % 256)
          << i << " of " << count;
      ASSERT_EQ(low.data()[i], samples[2 * i]) << i << " of " << count;
    }
    for (std::size_t i = 0; i < 2 * count; ++i) ASSERT_EQ(mapped.data()[i], table[samples[i]]) << i;
  }
}

TEST_P(Samples, TwoTapRows) {
  for (const std::size_t bytes : {1u, 2u}) {
    for (const std::size_t count : kCounts) {
      const Bytes row = RandomBytes(count * bytes, unsigned(count));
      Bytes expected = row;
      for (std::size_t i = 0; i + 1 < count; ++i) {
        const std::size_t to = i % 2 ? count - 1 - i / 2 : i / 2;
        for (std::size_t k = 0; k < bytes; ++k) expected[to * bytes + k] = row[i * bytes + k];
      }
      // Of an odd row the last pair ends before the last sample, and the middle keeps its own.
      if (count % 2 == 0) {
        for (std::size_t k = 0; k < bytes; ++k)
          expected[count / 2 * bytes + k] = row[(count - 1) * bytes + k];
      } else {
        for (std::size_t k = 0; k < bytes; ++k) expected[count / 2 * bytes + k] = row[count / 2 * bytes + k];
      }
      GuardedBytes actual(row), scratch(row);
      SortTwoTapRow(actual.data(), count, bytes, scratch.data());
      ASSERT_EQ(actual.Copy(), expected) << count << " of " << bytes;
    }
  }
}

TEST_P(Samples, SumsByParity) {
  for (const std::size_t width : kCounts) {
    const Bytes mosaic = width == 200 ? Bytes(5 * width, 255) : RandomBytes(5 * width, unsigned(width));
    std::uint64_t expected[2][2] = {};
    for (std::size_t i = 0; i < mosaic.size(); ++i) expected[i / width % 2][i % width % 2] += mosaic[i];
    GuardedBytes guarded(mosaic);
    const auto w = static_cast<int>(width);
    const MosaicSums sums = SumMosaic(guarded.data(), w, w, 5);
    for (int i = 0; i < 4; ++i) ASSERT_EQ(sums.at[i / 2][i % 2], expected[i / 2][i % 2]) << width;
  }
}

TEST_P(Samples, ExpandedPixels) {
  for (const std::size_t count : kCounts) {
    const Bytes colors = RandomBytes(3 * count, unsigned(count));
    GuardedBytes guarded(colors), packed(Bytes(4 * count)), grey(Bytes(4 * count));
    ExpandPacked(guarded.data(), count, packed.data());
    ExpandGrey(guarded.data() + 2 * count, count, 17, grey.data());
    for (std::size_t i = 0; i < 4 * count; ++i) {
      ASSERT_EQ(packed.data()[i], i % 4 == 3 ? 255 : colors[i / 4 * 3 + i % 4]) << i << " of " << count;
      ASSERT_EQ(grey.data()[i], i % 4 == 3 ? 17 : colors[2 * count + i / 4]) << i << " of " << count;
    }
  }
}

TEST_P(Samples, YuvTailsStayInside) {
  for (const std::size_t groups : kCounts) {
    const Bytes yuv = RandomBytes(4 * groups, unsigned(groups));
    GuardedBytes guarded(yuv), all(Bytes(8 * groups));
    Bytes one(8);
    YuvToPixels(guarded.data(), groups, all.data());
    for (std::size_t i = 0; i < groups; ++i) {
      YuvToPixels(&yuv[4 * i], 1, one.data());
      ASSERT_TRUE(std::equal(one.begin(), one.end(), all.data() + 8 * i)) << i << " of " << groups;
    }
  }
}

TEST_P(Samples, YuvEveryEntryAsTheFormula) {
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

TEST_P(Samples, LuminanceRoundsEachPixel) {
  // Blue, green, red 10, 20, 30 is 21.85; 1, 0, 1 is 0.413.
  const Bytes bgra{10, 20, 30, 255, 1, 0, 1, 255}, bgr{10, 20, 30, 1, 0, 1};
  EXPECT_EQ(SumLuminance(bgra.data(), 2, 4), 22u);
  EXPECT_EQ(SumLuminance(bgr.data(), 2, 3), 22u);
  for (const std::size_t count : kCounts) {
    const Bytes pixels = RandomBytes(4 * count, unsigned(count));
    std::uint64_t expected[2] = {};
    for (std::size_t i = 0; i < count; ++i) {
      for (const std::size_t bytes : {3u, 4u}) {
        const std::uint8_t* p = &pixels[bytes * i];
        const float r = 0.299f * p[2], g = 0.587f * p[1], b = 0.114f * p[0];
        expected[bytes - 3] += static_cast<std::uint64_t>(r + g + b + 0.5f);
      }
    }
    GuardedBytes guarded(pixels);
    ASSERT_EQ(SumLuminance(guarded.data(), count, 4), expected[1]) << count;
    ASSERT_EQ(SumLuminance(guarded.data() + count, count, 3),
              SumLuminance(Bytes(pixels.begin() + static_cast<std::ptrdiff_t>(count), pixels.end()).data(),
                           count, 3));
    ASSERT_EQ(SumLuminance(pixels.data(), count, 3), expected[0]) << count;
  }
}

TEST_P(Samples, ComplementaryAsReferenceAndInsideTheFrame) {
  for (int size = 1; size <= 90; ++size) {
    const int width = size <= 63 ? 1 + size % 9 : 2 * size + size % 3, height = 1 + size / 9;
    const int pitch = width + height % 2, pixelBytes = 3 + size % 2;
    Bytes frame = RandomBytes(static_cast<std::size_t>(pitch * height), unsigned(size));
    if (size % 5 == 0) {  // extremes only
      for (std::uint8_t& sample : frame) sample = sample < 128 ? 0 : 255;
    }
    Bytes expected(static_cast<std::size_t>(width * height * pixelBytes), 7);
    GuardedBytes guarded(frame), out(expected);
    DecodeComplementary(guarded.data(), frame.size(), std::size_t(pitch), width, 0, height - 1, pixelBytes,
                        out.data(), width * pixelBytes);
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
        std::uint8_t* p = &expected[static_cast<std::size_t>((row * width + column) * pixelBytes)];
        p[0] = Byte((1000 * y + 2032 * u) / 1000.0);
        p[1] = Byte((1000 * y - 395 * u - 581 * v) / 1000.0);
        p[2] = Byte((100 * y + 114 * v) / 100.0);
      }
    }
    ASSERT_EQ(out.Copy(), expected) << width << " x " << height;
  }
}

}  // namespace
}  // namespace zel
