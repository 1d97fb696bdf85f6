#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "imaging/CWhiteBalance.h"
#include "imaging/ColorTemperature.h"
#include "imaging/EachTarget.h"
#include "imaging/GuardedBytes.h"
#include "imaging/kernels/NearlyWhite.h"
#include "imaging/kernels/PlaneRow.h"

namespace zel {
namespace {

using Gains = std::array<LONG, 3>;
struct Color {
  int r, g, b;
};
constexpr Gains kBefore = {7, 8, 9};

// A mosaic inside a larger frame whose margins shine red, green or blue for anyone who counts them.
struct Mosaic {
  static constexpr LONG kMargin = 2;
  LONG width, height, mode, stride;
  std::vector<std::uint8_t> bytes;

  Mosaic(LONG w, LONG h, LONG bayerMode, Color color)
      : width(w),
        height(h),
        mode(bayerMode),
        stride(w + 11),
        bytes(std::size_t(w + 11) * (h + 4) + kRowSlack) {
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i * 37);
    for (LONG y = 0; y < h; ++y) {
      for (LONG x = 0; x < w; ++x) Paint(y, x, color);
    }
  }
  void Paint(LONG y, LONG x, Color color) {
    const bool row = ((mode & 1) + y) % 2 != 0, column = (mode / 2 + x) % 2 != 0;
    bytes[std::size_t((y + kMargin) * stride + kMargin + x)] =
        static_cast<std::uint8_t>(row == column ? color.g
                                  : row         ? color.b
                                                : color.r);
  }
  void PaintCell(LONG y, LONG x, Color color) {
    for (LONG i = 0; i < 4; ++i) Paint(2 * y + i / 2, 2 * x + i % 2, color);
  }
  Gains Balance(LONG modeIndex) const {
    CWhiteBalance balance;
    balance.Allocate(width, height);
    Gains g = kBefore;
    GuardedBytes frame(bytes);
    balance.ComputeGains(modeIndex, frame.data() + kMargin * stride + kMargin, stride, mode, width, height,
                         &g[0], &g[1], &g[2]);
    return g;
  }
  std::vector<std::uint8_t> Packed() const {
    std::vector<std::uint8_t> packed;
    for (LONG y = 0; y < height; ++y) {
      const auto row = bytes.begin() + (y + kMargin) * stride + kMargin;
      packed.insert(packed.end(), row, row + width);
    }
    return packed;
  }
};

// One uniform colour through the statistics: linear light, the mean with its divisor of one more, and back.
Gains UniformStatistics(Color color, double cells) {
  const auto through = [&](int value) {
    const double c = value / 255.0;
    const double linear =
        (c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4)) * cells / (cells + 1);
    const double level = std::floor(255 * linear + 0.5) / 255;
    return std::round(255 * (level <= 0.00304 ? 12.92 * level : 1.055 * std::pow(level, 1 / 2.4) - 0.055));
  };
  const double green = through(color.g);
  return {LONG(std::floor(128 * green / through(color.r) + 0.5)), 128,
          LONG(std::floor(128 * green / through(color.b) + 0.5))};
}

using WhiteBalance = EachTarget;
FOR_EACH_TARGET(WhiteBalance);

TEST_P(WhiteBalance, TintedMosaicsInAllPhasesAndSizes) {
  const std::array<LONG, 2> sizes[] = {{2, 2}, {3, 5}, {16, 4}, {33, 18}, {70, 9}};
  for (LONG mode = 0; mode < 4; ++mode) {
    for (const auto& [width, height] : sizes) {
      SCOPED_TRACE(testing::Message() << "mode " << mode << ", " << width << " x " << height);
      const Color color{200, 160, 100};
      const Mosaic mosaic(width, height, mode, color);
      EXPECT_EQ(mosaic.Balance(0), (Gains{102, 128, 205}));
      Gains g = kBefore;
      GuardedBytes packed(mosaic.Packed());
      GreyWorldGains24(packed.data(), width, height, mode, &g[0], &g[1], &g[2]);
      EXPECT_EQ(g, (Gains{102, 128, 205}));
      const int cells = (width / 2) * ((height / 2 + 1) / 2);
      for (LONG index : {1, 2}) EXPECT_EQ(mosaic.Balance(index), UniformStatistics(color, cells));
    }
  }
}

TEST_P(WhiteBalance, GreyIsNeutralAndDarkSaysNothing) {
  for (int v = 1; v < 256; ++v) {
    const Mosaic mosaic(12, 12, 1, {v, v, v});
    EXPECT_EQ(mosaic.Balance(0), (Gains{128, 128, 128})) << v;
    EXPECT_EQ(mosaic.Balance(1), v < 64 ? kBefore : (Gains{128, 128, 128})) << v;  // 63 of 255 is Y 0.0497
  }
  EXPECT_EQ(Mosaic(8, 8, 0, {90, 90, 0}).Balance(0), kBefore);
  EXPECT_EQ(Mosaic(8, 8, 0, {200, 200, 0}).Balance(1), kBefore);
  EXPECT_EQ(Mosaic(1, 1, 0, {90, 90, 90}).Balance(0), kBefore);
}

TEST_P(WhiteBalance, StatisticsLeaveOutDarkOutlyingAndUnlookedCells) {
  Mosaic mosaic(40, 40, 3, {100, 100, 100});
  for (LONG x = 0; x < 20; ++x) {
    for (LONG y = 1; y < 20; y += 2) mosaic.PaintCell(y, x, {250, 10, 130});  // every second row of cells
    mosaic.PaintCell(4, x, {0, 0, 120});                                      // Y 0.014
  }
  mosaic.PaintCell(0, 5, {255, 60, 60});
  mosaic.PaintCell(2, 5, {60, 60, 255});
  EXPECT_EQ(mosaic.Balance(1), (Gains{128, 128, 128}));
}

/// Little-endian two-byte samples of `factor` times these values.
std::vector<std::uint8_t> TwoBytes(const std::vector<std::uint8_t>& samples, int factor) {
  std::vector<std::uint8_t> bytes;
  for (const int sample : samples) {
    bytes.push_back(static_cast<std::uint8_t>(sample * factor));
    bytes.push_back(static_cast<std::uint8_t>(sample * factor >> 8));
  }
  return bytes;
}

TEST_P(WhiteBalance, StatisticsTakeTheMeanOfBothGreensRoundedUp) {
  for (LONG mode = 0; mode < 4; ++mode) {
    Mosaic mosaic(24, 8, mode, {150, 100, 90});
    for (LONG y = 0; y < 8; y += 2) {
      for (LONG x = 0; x < 24; ++x) mosaic.Paint(y, x, {150, 201, 90});
    }
    // In one row greens of 201, in the other of 100: 150.5.
    EXPECT_EQ(mosaic.Balance(1), UniformStatistics({150, 151, 90}, 12 * 2)) << mode;
  }
}

// Of three cells one is 6.5 times as bright as the others: more than three times the sum by four, less than
// the sum.
TEST_P(WhiteBalance, StatisticsDivideByOneMoreThanTheCells) {
  Mosaic mosaic(6, 2, 1, {70, 70, 70});
  mosaic.PaintCell(0, 1, {190, 170, 120});
  EXPECT_EQ(mosaic.Balance(1), (Gains{128, 128, 128}));
}

// Groups of ever brighter cells, of which each look finds the brightest that is left to lie outside three
// times the mean. The sixth would find the last: 128, 128; the fourth leaves one more in: 108, 150.
TEST_P(WhiteBalance, StatisticsLookFiveTimes) {
  struct Group {
    Color color;
    int cells;
  };
  const Group groups[] = {{{66, 66, 66}, 798},    {{173, 135, 100}, 112}, {{190, 149, 110}, 96},
                          {{208, 163, 121}, 115}, {{239, 188, 140}, 91},  {{255, 216, 161}, 83}};
  Mosaic mosaic(2 * 37, 2 * 69, 2, {0, 0, 0});  // 37 x 35 cells in every second row of cells
  LONG cell = 0;
  for (const auto& [color, cells] : groups) {
    for (int n = 0; n < cells; ++n, ++cell) mosaic.PaintCell(cell / 37 * 2, cell % 37, color);
  }
  EXPECT_EQ(mosaic.Balance(2), (Gains{115, 128, 142}));
}

TEST_P(WhiteBalance, WhitePointOfThe24BitClass) {
  struct Case {
    Color color;
    int factor;
    Gains expected;
  };
  const Case cases[] = {{{255, 255, 255}, 1, {128, 128, 128}}, {{240, 230, 220}, 1, {123, 128, 134}},
                        {{240, 230, 220}, 4, {123, 128, 134}},   // ten bits
                        {{60, 58, 55}, 257, {124, 128, 135}},    // sixteen
                        {{200, 200, 200}, 1, {128, 100, 128}},   // not bright enough
                        {{255, 220, 180}, 1, {128, 100, 128}}};  // too coloured
  for (const Case& c : cases) {
    for (LONG mode = 0; mode < 4; ++mode) {
      Gains g = kBefore;
      GuardedBytes frame(TwoBytes(Mosaic(11, 8, mode, c.color).Packed(), c.factor));
      WhitePointGains24(frame.data(), 11, 9, 8, mode, &g[0], &g[1], &g[2]);
      EXPECT_EQ(g, c.expected) << c.color.r << ", mode " << mode;
    }
  }
}

TEST_P(WhiteBalance, NearlyWhiteSumsAsTheirFormula) {
  for (int width = 5; width < 220; width = width * 5 / 4 + 1) {
    for (int mode = 0; mode < 8; ++mode) {
      // Bright noise around the limit, or anything up to the largest samples.
      std::vector<int> samples;
      for (int i = 0; i < 4 * width; ++i) {
        samples.push_back(mode < 4 ? 205 + i * i * 31 % 50 : i * i % 7 == 0 ? 65535 : i * i % 911 * 65);
      }
      std::vector<std::uint8_t> frame;
      for (const int sample : samples) {
        frame.push_back(static_cast<std::uint8_t>(sample));
        frame.push_back(static_cast<std::uint8_t>(sample >> 8));
      }
      WhiteSums expected, sums;
      const BayerPhase phase = PhaseOfMode(mode % 4);
      for (int x = 2; x < width - 2; ++x) {
        const BayerSample s = DirectColorAt(&samples[static_cast<std::size_t>(2 * width + x)], width,
                                            phase.row, PhaseAt(phase, 0, x).column);
        const int r = s.red / 16, g = s.green, b = s.blue / 16;
        const double cb = -0.1687 * r - 0.3313 * g + 0.5 * b, cr = 0.5 * r - 0.4187 * g - 0.0813 * b;
        if (0.299 * r + 0.587 * g + 0.114 * b - std::abs(cb) - std::abs(cr) <= 200.5) continue;
        expected.red += static_cast<std::uint64_t>(r);
        expected.green += static_cast<std::uint64_t>(g);
        expected.blue += static_cast<std::uint64_t>(b);
        ++expected.count;
      }
      GuardedBytes guarded(frame, mode % 2 ? GuardedBytes::Guard::Before : GuardedBytes::Guard::Behind);
      AddNearlyWhite(guarded.data() + 4 * width, width, width, phase, sums);
      ASSERT_EQ(sums.count, expected.count) << width;
      ASSERT_EQ(sums.red, expected.red) << width;
      ASSERT_EQ(sums.green, expected.green) << width;
      ASSERT_EQ(sums.blue, expected.blue) << width;
    }
  }
}

TEST(ColorTemperature, GainsAtTheTablesEdges) {
  struct Case {
    LONG kelvin;
    bool known;
    Gains expected;
  };
  const Case cases[] = {{1999, false, {100, 100, 100}}, {2000, true, {100, 167, 8333}},
                        {2005, true, {100, 167, 8333}}, {2010, true, {100, 166, 7143}},
                        {2020, true, {100, 165, 6250}}, {6500, true, {100, 100, 100}},
                        {7001, false, {100, 100, 100}}, {-1, false, {100, 100, 100}}};
  for (const Case& c : cases) {
    Gains g = kBefore;
    EXPECT_EQ(GainsFromTemperature(c.kelvin, &g[0], &g[1], &g[2]), c.known) << c.kelvin;
    EXPECT_EQ(g, c.expected) << c.kelvin;
  }
  Gains last = {100, 167, 8333};
  for (LONG kelvin = 2000; kelvin <= 7000; kelvin += 10) {
    Gains g{};
    ASSERT_TRUE(GainsFromTemperature(kelvin, &g[0], &g[1], &g[2]));
    EXPECT_TRUE(g[0] == 100 && g[1] <= last[1] && g[2] <= last[2] && g[2] > 0) << kelvin;  // bluer and bluer
    last = g;
  }
}

TEST(ColorTemperature, WhitePoint) {
  const double cases[][4] = {{2000, 1, 0.2524, 0.0227},
                             {4000, 1, 0.6746, 0.3576},
                             {6504, 0.9991, 1, 0.9990},
                             {15000, 0.4360, 0.6007, 1}};
  for (const auto& [kelvin, red, green, blue] : cases) {
    double r, g, b;
    WhitePointFromTemperature(kelvin, &r, &g, &b);
    EXPECT_NEAR(r, red, 0.0001) << kelvin;
    EXPECT_NEAR(g, green, 0.0001) << kelvin;
    EXPECT_NEAR(b, blue, 0.0001) << kelvin;
  }
}

}  // namespace
}  // namespace zel
