#include "imaging/ColorMatrix.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace zel {
namespace {

using Rows = std::vector<std::vector<int>>;

Rows Coefficients(const FixedColorMatrix& matrix) {
  Rows rows;
  for (const auto& row : matrix.c) rows.emplace_back(row, row + 4);
  return rows;
}

const Rows kIdentity = {{64, 0, 0, 0}, {0, 64, 0, 0}, {0, 0, 64, 0}, {0, 0, 0, 64}};

TEST(ColorMatrix, SettingsAsCoefficients) {
  struct Case {
    const char* name;
    LONG brightness, saturation, hue;
    Rows expected;
  };
  const Case cases[] = {
      {"neutral", 0, 0, 0, kIdentity},
      {"full turn", 0, 0, 360, kIdentity},
      {"darker", -30, 0, 0, {{64, 0, 0, 0}, {0, 64, 0, 0}, {0, 0, 64, 0}, {-1920, -1920, -1920, 64}}},
      {"most brightness",
       300,
       0,
       0,
       {{64, 0, 0, 0}, {0, 64, 0, 0}, {0, 0, 64, 0}, {16320, 16320, 16320, 64}}},
      {"least brightness fits",
       std::numeric_limits<LONG>::min(),
       0,
       0,
       {{64, 0, 0, 0}, {0, 64, 0, 0}, {0, 0, 64, 0}, {-32768, -32768, -32768, 64}}},
      {"grey, offset kept",
       10,
       -10,
       0,
       {{20, 20, 20, 0}, {39, 39, 39, 0}, {5, 5, 5, 0}, {640, 640, 640, 64}}},
      {"most saturation", 0, 15, 0, {{108, -20, -20, 0}, {-39, 89, -39, 0}, {-5, -5, 123, 0}, {0, 0, 0, 64}}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    ColorMatrix matrix;
    matrix.SetHue(90);
    matrix.SetHue(c.hue);
    matrix.SetBrightness(c.brightness);
    matrix.SetSaturation(c.saturation);
    EXPECT_EQ(Coefficients(matrix.Product()), c.expected);
    EXPECT_EQ(matrix.Product().active, c.expected != kIdentity);
  }
}

TEST(ColorMatrix, HueTurnsAndKeepsLuminance) {
  const int weights[] = {3086, 6094, 820};
  for (const auto& [degrees, strongest] : {std::pair{120, 1}, {-120, 2}, {240, 2}, {20, 0}}) {
    ColorMatrix matrix;
    matrix.SetHue(degrees);
    const auto& c = matrix.Product().c;
    for (int row = 0; row < 3; ++row) {
      int luminance = 0;
      for (int column = 0; column < 3; ++column) luminance += c[row][column] * weights[column];
      EXPECT_NEAR(luminance, 64 * weights[row], 5000) << degrees;  // half a step of rounding for each
    }
    for (int column = 0; column < 3; ++column)
      EXPECT_GE(c[0][strongest], c[0][column]) << degrees << " of red";
  }
}

TEST(ColorMatrix, CorrectionTakesTheUserMatrixWhenSwitched) {
  ColorMatrix matrix;
  matrix.SetUserElement(3, 0, 100);
  matrix.SetUserElement(0, 1, 1000);
  matrix.SetUserElement(1, 0, -1000);
  matrix.SetUserElement(2, 0, std::nanf(""));
  matrix.SetUserElement(4, 0, 5);
  matrix.SetUserElement(0, -1, 5);
  EXPECT_FALSE(matrix.Product().active);
  matrix.SetCorrection(true);
  EXPECT_EQ(Coefficients(matrix.Product()),
            (Rows{{64, 32767, 0, 0}, {-32768, 64, 0, 0}, {0, 0, 64, 0}, {6400, 0, 0, 64}}));
  matrix.SetUserElement(3, 0, 50);
  EXPECT_EQ(matrix.UserElement(3, 0), 50);
  EXPECT_EQ(matrix.Product().c[3][0], 6400);

  // Saturation comes after correction: it also greys the offset.
  matrix.SetSaturation(-10);
  EXPECT_EQ(matrix.Product().c[3][2], 1975);
  matrix.SetCorrection(false);
  EXPECT_EQ(matrix.Product().c[3][2], 0);
}

}  // namespace
}  // namespace zel
