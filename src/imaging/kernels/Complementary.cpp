#include "imaging/kernels/Complementary.h"

#include <algorithm>
#include <utility>

namespace zel {
namespace {

/// Thousandths to the nearest byte, ties upward.
std::uint8_t Round(int thousandths) {
  return static_cast<std::uint8_t>(std::clamp(thousandths + 500, 0, 255'999) / 1000);
}

}  // namespace

void DecodeComplementary(const std::uint8_t* frame, std::size_t frameBytes, std::size_t pitch, int width,
                         int firstRow, int endRow, int pixelBytes, std::uint8_t* out,
                         std::ptrdiff_t outStride) {
  for (int row = firstRow; row < endRow; ++row) {
    const std::size_t start = std::size_t(row) * pitch;
    for (int column = 1; column < width; ++column) {
      const std::size_t cell = start + std::size_t(column);
      if (cell + pitch + 1 >= frameBytes) break;
      int a = frame[cell], b = frame[cell + 1], c = frame[cell + pitch], d = frame[cell + pitch + 1];
      // Each name stands for the same filter colour wherever the cell lies.
      if (column & 1) {
        std::swap(a, b);
        std::swap(c, d);
      }
      if (row & 1) {
        std::swap(a, c);
        std::swap(b, d);
      }
      const int y = (a + b + c + d) >> 2;
      const int u = std::max(0, (d + b) - (c + a));
      const int v = std::max(0, (d + a) - (c + b));
      std::uint8_t* pixel = out + row * outStride + std::ptrdiff_t{column} * pixelBytes;
      pixel[0] = Round(1000 * y + 2032 * u);
      pixel[1] = Round(1000 * y - 395 * u - 581 * v);
      pixel[2] = Round(1000 * y + 1140 * v);
    }
  }
}

}  // namespace zel
