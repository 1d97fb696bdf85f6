#include "bench/scene.h"

#include <cmath>
#include <random>

namespace zel::bench {
namespace {

std::uint8_t Level(double v) {
  return static_cast<std::uint8_t>(std::clamp(v, 0.0, 255.0));
}

/// The scene's colour `c` (blue, green, red) at a place.
double Color(int x, int y, int c) {
  const double edge = (x / 160 + y / 120) % 2 == 0 ? 40 : 0;
  return 100 + edge + 50 * std::sin(x * 0.013 + c) + 40 * std::cos(y * 0.021 - 2 * c);
}

Bytes MakeMosaic() {
  Bytes mosaic(kSamples);
  std::mt19937 random(1);
  std::normal_distribution<double> noise(0, 3);
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      const bool row = y % 2 != 0, column = x % 2 != 0;
      const int color = row == column ? 1 : row ? 0 : 2;
      const bool defect = random() % 1000 == 0;
      mosaic[std::size_t(y) * kWidth + x] = defect ? 255 : Level(Color(x, y, color) + noise(random));
    }
  }
  return mosaic;
}

}  // namespace

const Bytes& Mosaic() {
  static const Bytes mosaic = MakeMosaic();
  return mosaic;
}

const Bytes& TenBitMosaic() {
  static const Bytes samples = [] {
    Bytes ten(2 * kSamples);
    for (std::size_t i = 0; i < kSamples; ++i) {
      const int v = Mosaic()[i] * 4 + static_cast<int>(i % 4);
      ten[2 * i] = static_cast<std::uint8_t>(v);
      ten[2 * i + 1] = static_cast<std::uint8_t>(v >> 8);
    }
    return ten;
  }();
  return samples;
}

const Bytes& Pixels() {
  static const Bytes pixels = [] {
    Bytes bgra(4 * kSamples, 255);
    for (std::size_t i = 0; i < kSamples; ++i) {
      const int x = static_cast<int>(i % kWidth), y = static_cast<int>(i / kWidth);
      for (int c = 0; c < 3; ++c) bgra[4 * i + std::size_t(c)] = Level(Color(x, y, c) + Mosaic()[i] % 8);
    }
    return bgra;
  }();
  return pixels;
}

const Bytes& Yuv() {
  static const Bytes yuv = [] {
    Bytes bytes(2 * kSamples);
    for (std::size_t i = 0; i < kSamples; ++i) {
      bytes[2 * i] = Mosaic()[i];
      bytes[2 * i + 1] = static_cast<std::uint8_t>(96 + Mosaic()[i] / 4);
    }
    return bytes;
  }();
  return yuv;
}

}  // namespace zel::bench
