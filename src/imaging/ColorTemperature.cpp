#include "imaging/ColorTemperature.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace zel {

namespace {

constexpr LONG kFirstKelvin = 2000;
constexpr LONG kLastKelvin = 7000;
constexpr LONG kStepKelvin = 10;
constexpr std::size_t kRows = (kLastKelvin - kFirstKelvin) / kStepKelvin + 1;

// How bright each colour of the light is beside its red, in units of 1/10000.
struct LightColor {
  std::int32_t red, green, blue;
};
constexpr std::int32_t kOne = 10000;

// Starts from the measured colours at 2000, 2010 and 2020 K: green 0.5977, 0.6021, 0.6064; blue 0.012, 0.014,
// 0.016. Green closes its distance to red by the same share with every row, as the three measured ones do.
// Blue goes on as a straight line, plus a cubic that is nothing in those three rows and brings it level with
// red at 6500 K.
constexpr std::array<LightColor, kRows> MakeLightColors() {
  constexpr double kGreenShare = 0.989127;
  constexpr int kNeutralRow = (6500 - kFirstKelvin) / kStepKelvin;
  constexpr double kBlueStart = 0.012;
  constexpr double kBlueSlope = 0.002;
  constexpr double kBlueCubic =
      (1.0 - kBlueStart - kBlueSlope * kNeutralRow) / (kNeutralRow * (kNeutralRow - 1) * (kNeutralRow - 2));
  std::array<LightColor, kRows> colors{};
  double greenDistance = 1.0 - 0.5977;
  for (std::size_t i = 0; i < kRows; ++i) {
    const auto row = static_cast<double>(i);
    const double blue = kBlueStart + kBlueSlope * row + kBlueCubic * row * (row - 1) * (row - 2);
    colors[i] = {kOne, static_cast<std::int32_t>((1.0 - greenDistance) * kOne + 0.5),
                 static_cast<std::int32_t>(blue * kOne + 0.5)};
    greenDistance *= kGreenShare;
  }
  return colors;
}

constexpr std::array<LightColor, kRows> kLightColors = MakeLightColors();
static_assert(kLightColors[0].green == 5977 && kLightColors[1].green == 6021 &&
              kLightColors[2].green == 6064);
static_assert(kLightColors[0].blue == 120 && kLightColors[1].blue == 140 && kLightColors[2].blue == 160);
static_assert(kLightColors[450].green > 9900 && kLightColors[450].blue == kOne);

// 100 / factor, rounded.
constexpr LONG GainOf(std::int32_t factor) {
  return (2 * 100 * kOne + factor) / (2 * factor);
}

}  // namespace

bool GainsFromTemperature(LONG kelvin, LONG* r, LONG* g, LONG* b) {
  if (kelvin < kFirstKelvin || kelvin > kLastKelvin) {
    *r = *g = *b = 100;
    return false;
  }
  const LightColor& color = kLightColors[static_cast<std::size_t>((kelvin - kFirstKelvin) / kStepKelvin)];
  *r = GainOf(color.red);
  *g = GainOf(color.green);
  *b = GainOf(color.blue);
  return true;
}

void WhitePointFromTemperature(double kelvin, double* r, double* g, double* b) {
  // Chromaticity of daylight: x(T) as one cubic in 1/T per range, y from the daylight locus.
  struct Cubic {
    double a3, a2, a1, a0;
  };
  constexpr Cubic kWarm{2.7475e8, -985980.0, 1174.44, 0.145986};  // up to 4000 K
  constexpr Cubic kDay{-4.607e9, 2.9678e6, 99.11, 0.244063};      // up to 7000 K
  constexpr Cubic kCold{-2.0064e9, 1.9018e6, 247.48, 0.23704};
  const Cubic& f = kelvin <= 4000 ? kWarm : kelvin <= 7000 ? kDay : kCold;
  const double x = f.a3 / (kelvin * kelvin * kelvin) + f.a2 / (kelvin * kelvin) + f.a1 / kelvin + f.a0;
  const double y = -3.0 * x * x + 2.87 * x - 0.275;

  const double X = x / y;
  const double Y = 1;
  const double Z = (1 - x - y) / y;
  *r = 3.24071 * X - 1.53726 * Y - 0.498571 * Z;
  *g = -0.969258 * X + 1.87599 * Y + 0.0415557 * Z;
  *b = 0.0556352 * X - 0.203996 * Y + 1.05707 * Z;
  const double largest = std::max({0.0, *r, *g, *b});
  *r /= largest;
  *g /= largest;
  *b /= largest;
}

}  // namespace zel
