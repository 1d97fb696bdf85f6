#include "imaging/kernels/Sharpness.h"

#include <algorithm>

namespace zel {

namespace {

constexpr int kColors = 3;  // the fourth byte is alpha

void BlurRow(const std::uint8_t* source, std::ptrdiff_t stride, int width, std::uint8_t* blurred) {
  for (int column = 2; column <= width - 2; ++column) {
    for (int color = 0; color < kColors; ++color) {
      const std::uint8_t* corner = source - 2 * stride + (column - 2) * 4 + color;
      int sum = 0;
      for (int y = 0; y < 4; ++y) {
        const std::uint8_t* p = corner + y * stride;
        sum += p[0] + p[4] + p[8] + p[12];
      }
      blurred[column * 4 + color] = static_cast<std::uint8_t>(sum >> 4);
    }
  }
}

}  // namespace

void Sharpen(std::uint8_t* bgra, int width, int height, std::ptrdiff_t strideBytes,
             const std::int32_t* table512, std::uint8_t* blurred) {
  if (bgra == nullptr || width < 4 || height < 4) return;
  for (int row = 2; row <= height - 2; ++row) {
    BlurRow(bgra + row * strideBytes, strideBytes, width, blurred + row * strideBytes);
  }
  for (int row = 2; row < height; ++row) {
    std::uint8_t* pixels = bgra + row * strideBytes;
    const std::uint8_t* means = blurred + std::min(row, height - 2) * strideBytes;
    for (int column = 2; column < width; ++column) {
      const std::uint8_t* mean = means + std::min(column, width - 2) * 4;
      for (int color = 0; color < kColors; ++color) {
        std::uint8_t& value = pixels[column * 4 + color];
        value = static_cast<std::uint8_t>(std::clamp(value + table512[value - mean[color] + 255], 0, 255));
      }
    }
  }
}

}  // namespace zel
