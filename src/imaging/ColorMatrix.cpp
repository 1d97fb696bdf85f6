#include "imaging/ColorMatrix.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace zel {

namespace {

constexpr float kScale = 64.0f;

// Weights of linear red, green and blue in luminance.
constexpr float kLuminance[3] = {0.3086f, 0.6094f, 0.082f};

std::int16_t ToFixed(float value) {
  constexpr float kLow = std::numeric_limits<std::int16_t>::min();
  constexpr float kHigh = std::numeric_limits<std::int16_t>::max();
  const float rounded = std::floor(value * kScale + 0.5f);
  if (std::isnan(rounded)) return 0;
  return static_cast<std::int16_t>(std::clamp(rounded, kLow, kHigh));
}

bool IsElement(int row, int column) {
  return row >= 0 && row < 4 && column >= 0 && column < 4;
}

}  // namespace

ColorMatrix::Matrix ColorMatrix::Multiply(const Matrix& a, const Matrix& b) {
  Matrix product{};
  for (std::size_t row = 0; row < 4; ++row) {
    for (std::size_t column = 0; column < 4; ++column) {
      for (std::size_t i = 0; i < 4; ++i) product[row][column] += a[row][i] * b[i][column];
    }
  }
  return product;
}

// Turns the grey axis into the blue one, shears so that planes of equal luminance lie across it, rotates
// about it and undoes the rest.
ColorMatrix::Matrix ColorMatrix::HueRotation(float radians) {
  const auto aboutRed = [](float sine, float cosine) {
    return Matrix{{{1, 0, 0, 0}, {0, cosine, sine, 0}, {0, -sine, cosine, 0}, {0, 0, 0, 1}}};
  };
  const auto aboutGreen = [](float sine, float cosine) {
    return Matrix{{{cosine, 0, -sine, 0}, {0, 1, 0, 0}, {sine, 0, cosine, 0}, {0, 0, 0, 1}}};
  };
  const auto aboutBlue = [](float sine, float cosine) {
    return Matrix{{{cosine, sine, 0, 0}, {-sine, cosine, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};
  };
  const auto shear = [](float x, float y) {
    return Matrix{{{1, 0, x, 0}, {0, 1, y, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};
  };

  const float redSine = 1.0f / std::sqrt(2.0f);
  const float greenSine = -1.0f / std::sqrt(3.0f);
  const float greenCosine = std::sqrt(2.0f) / std::sqrt(3.0f);
  const Matrix upright = Multiply(aboutRed(redSine, redSine), aboutGreen(greenSine, greenCosine));
  float luminance[3] = {};
  for (std::size_t column = 0; column < 3; ++column) {
    for (std::size_t i = 0; i < 3; ++i) luminance[column] += kLuminance[i] * upright[i][column];
  }
  const float shearX = luminance[0] / luminance[2];
  const float shearY = luminance[1] / luminance[2];

  Matrix hue = Multiply(upright, shear(shearX, shearY));
  hue = Multiply(hue, aboutBlue(std::sin(radians), std::cos(radians)));
  hue = Multiply(hue, shear(-shearX, -shearY));
  hue = Multiply(hue, aboutGreen(-greenSine, greenCosine));
  return Multiply(hue, aboutRed(-redSine, redSine));
}

void ColorMatrix::SetBrightness(LONG brightness) {
  if (brightness == lastBrightness_) return;
  lastBrightness_ = brightness;
  const auto offset = static_cast<float>(std::min<LONG>(brightness, 255));
  brightness_ = kIdentity;
  brightness_[3] = {offset, offset, offset, 1};
  Rebuild();
}

void ColorMatrix::SetSaturation(LONG saturation) {
  if (saturation == lastSaturation_) return;
  lastSaturation_ = saturation;
  const float k = static_cast<float>(std::min<LONG>(saturation, 10)) * 0.1f + 1.0f;
  saturation_ = kIdentity;
  for (std::size_t row = 0; row < 3; ++row) {
    for (std::size_t column = 0; column < 3; ++column) {
      saturation_[row][column] = kLuminance[row] * (1.0f - k) + (row == column ? k : 0.0f);
    }
  }
  Rebuild();
}

void ColorMatrix::SetHue(LONG degrees) {
  if (degrees == lastHue_) return;
  lastHue_ = degrees;
  hue_ = HueRotation(static_cast<float>(degrees) * 3.1415927f / 180.0f);
  Rebuild();
}

void ColorMatrix::SetCorrection(bool on) {
  correction_ = on ? user_ : kIdentity;
  Rebuild();
}

void ColorMatrix::SetUserElement(int row, int column, float value) {
  // An infinity times a zero elsewhere in the product would spread.
  if (IsElement(row, column) && std::isfinite(value))
    user_[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)] = value;
}

float ColorMatrix::UserElement(int row, int column) const {
  return IsElement(row, column) ? user_[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)]
                                : 0.0f;
}

void ColorMatrix::Rebuild() {
  const Matrix product = Multiply(Multiply(Multiply(correction_, brightness_), saturation_), hue_);
  product_.active = false;
  for (std::size_t row = 0; row < 4; ++row) {
    for (std::size_t column = 0; column < 4; ++column) {
      const std::int16_t fixed = ToFixed(product[row][column]);
      product_.c[row][column] = fixed;
      product_.active |= fixed != (row == column ? 64 : 0);
    }
  }
}

}  // namespace zel
