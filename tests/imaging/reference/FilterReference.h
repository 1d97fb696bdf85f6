#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "imaging/ColorGains.h"
#include "imaging/kernels/BayerTaps.h"

/// The filters as textbook loops over index arithmetic: slow, never optimised, the judge of the kernels.
namespace zel::reference {

using Bytes = std::vector<std::uint8_t>;

inline void DotFilter(Bytes& frame, int pitch, int width, int height, int threshold) {
  for (int y = 2; y <= height - 3; ++y) {
    for (int x = 2; x <= width - 3; ++x) {
      const auto at = [&](int dy, int dx) -> std::uint8_t& { return frame.at((y + dy) * pitch + x + dx); };
      const int mean = (at(0, -2) + at(0, 2) + at(-2, 0) + at(2, 0)) / 4;
      if (std::abs(at(0, 0) - mean) >= threshold) at(0, 0) = static_cast<std::uint8_t>(mean);
    }
  }
}

inline void CancelWhitePixels(Bytes& frame, int fullWidth, int height, int threshold, int bayerMode,
                              const ColorGains& gains) {
  const int size = static_cast<int>(frame.size());
  for (int y = 2; y <= height - 3; ++y) {
    for (int x = 2; x <= fullWidth - 3; ++x) {
      const int i = y * fullWidth + x;
      if (i + 2 >= size || i + 2 * height >= size) continue;
      const int mean = (frame[i - 2] + frame[i + 2] + frame[i - 2 * fullWidth] + frame[i + 2 * height]) / 4;
      if (frame[i] - mean < threshold || i + fullWidth + 1 >= size) continue;
      const bool rowFlag = ((bayerMode & 1) + y) % 2 != 0, columnFlag = (bayerMode / 2 + x) % 2 != 0;
      const BayerSample s = DirectColorAt(&frame[i], fullWidth, rowFlag, columnFlag);
      const auto scaled = [](std::int64_t sum, int gain, int unit) {
        return static_cast<int>(std::clamp<std::int64_t>(sum * gain / unit, 0, 255));
      };
      const int r = scaled(s.red, gains.r, 2048), g = scaled(s.green, gains.g, 128),
                b = scaled(s.blue, gains.b, 2048);
      const int differing = (std::abs(r - g) > 30) + (std::abs(r - b) > 30) + (std::abs(g - b) > 30);
      if (differing >= 2) frame[i] = static_cast<std::uint8_t>(mean);
    }
  }
}

/// On pixels of 3 bytes without row gaps.
inline Bytes Sharpen(const Bytes& in, int width, int height, int strength) {
  const int stride = 3 * width;
  Bytes out = in;
  if (width < 4 || height < 4) return out;
  for (int y = 2; y <= height - 1; ++y) {
    for (int x = 2; x <= width - 1; ++x) {
      const int cy = std::min(y, height - 2), cx = std::min(x, width - 2);
      for (int color = 0; color < 3; ++color) {
        int sum = 0;
        for (int dy = -2; dy <= 1; ++dy) {
          for (int dx = -2; dx <= 1; ++dx) sum += in.at((cy + dy) * stride + (cx + dx) * 3 + color);
        }
        const int value = in.at(y * stride + x * 3 + color);
        const int sharp = value + (value - sum / 16) * strength / 10;
        out.at(y * stride + x * 3 + color) = static_cast<std::uint8_t>(std::max(0, std::min(255, sharp)));
      }
    }
  }
  return out;
}

inline Bytes Resample(const Bytes& in, int sw, int sh, int dw, int dh) {
  Bytes out(static_cast<std::size_t>(dw) * dh * 4);
  const std::int64_t stepX = (sw * 65536LL - 65536) / dw, stepY = (sh * 65536LL - 65536) / dh;
  for (std::int64_t i = 0; i < dh; ++i) {
    for (std::int64_t j = 0; j < dw; ++j) {
      const std::int64_t y = i * stepY, x = j * stepX, fy = y / 256 % 256, fx = x / 256 % 256;
      const std::int64_t w11 = fx * fy / 256, w01 = fx - w11, w10 = fy - w11, w00 = 256 - fx - fy + w11;
      for (int c = 0; c < 4; ++c) {
        const auto p = [&](std::int64_t dy, std::int64_t dx) {
          return std::int64_t{in.at(((y / 65536 + dy) * sw + x / 65536 + dx) * 4 + c)};
        };
        const std::int64_t sum = p(0, 0) * w00 + p(0, 1) * w01 + p(1, 0) * w10 + p(1, 1) * w11;
        out[(i * dw + j) * 4 + c] = static_cast<std::uint8_t>(sum / 256);
      }
    }
  }
  return out;
}

}  // namespace zel::reference
