#include "imaging/kernels/PaddedFrame.h"

#include <cstring>

namespace zel {

bool IsContinued(int width, int height) {
  return width >= 8 && height >= 8;
}

int RowBehind(int row, int width, int height) {
  if (!IsContinued(width, height)) return row;
  if (row < 2) return row % 2 == 0 ? 4 : 3;
  return row < height ? row : row == height ? height - 4 : height - 3;
}

void FillSides(std::uint8_t* samples, int width, int height) {
  if (!IsContinued(width, height)) return;
  samples[-1] = samples[1];
  samples[-2] = samples[2];
  samples[width] = samples[width - 2];
  samples[width + 1] = samples[width - 3];
}

void FillMargins(std::uint8_t* image, std::ptrdiff_t stride, int width, int height) {
  if (!IsContinued(width, height)) return;
  for (int row = -2; row < height + 2; ++row) {
    std::uint8_t* samples = image + row * stride;
    const int from = RowBehind(row, width, height);
    if (from != row) std::memcpy(samples, image + from * stride, static_cast<std::size_t>(width));
    FillSides(samples, width, height);
  }
}

}  // namespace zel
