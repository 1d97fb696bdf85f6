#pragma once

#include <array>
#include <cstdint>

#include "platform/ComponentTypes.h"

namespace zel {

/// A colour matrix in fixed point, 64 is 1.0: out[j] = sum over i of (R, G, B, 1)[i] * c[i][j] / 64. Offsets
/// stand in the last row, in 8-bit units times 64.
struct FixedColorMatrix {
  std::int16_t c[4][4] = {{64, 0, 0, 0}, {0, 64, 0, 0}, {0, 0, 64, 0}, {0, 0, 0, 64}};
  bool active = false;  ///< any coefficient differs from the identity's
};

/// Brightness, saturation, hue and colour correction as one matrix. Not locked: its owner guards it.
class ColorMatrix {
 public:
  void SetBrightness(LONG brightness);  ///< offset in 8-bit units, at most 255
  void SetSaturation(LONG saturation);  ///< tenths around neutral 0: -10 grey, 10 (the most) doubled
  void SetHue(LONG degrees);            ///< positive turns red towards green; keeps luminance
  /// Puts the user matrix, as it is now, to use (or nothing in its place).
  void SetCorrection(bool on);

  /// One coefficient of the user matrix, 0..3 each; others, and values that are no finite numbers, are
  /// ignored. Takes effect with the next `SetCorrection`.
  void SetUserElement(int row, int column, float value);
  float UserElement(int row, int column) const;

  /// The product of all, rounded to nearest; what does not fit into 16 bits saturates.
  const FixedColorMatrix& Product() const { return product_; }

 private:
  using Matrix = std::array<std::array<float, 4>, 4>;
  static constexpr Matrix kIdentity{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};

  static Matrix Multiply(const Matrix& a, const Matrix& b);
  static Matrix HueRotation(float radians);
  void Rebuild();

  Matrix user_ = kIdentity;
  Matrix correction_ = kIdentity;
  Matrix brightness_ = kIdentity;
  Matrix saturation_ = kIdentity;
  Matrix hue_ = kIdentity;
  LONG lastBrightness_ = 0;
  LONG lastSaturation_ = 0;
  LONG lastHue_ = 0;
  FixedColorMatrix product_;
};

}  // namespace zel
