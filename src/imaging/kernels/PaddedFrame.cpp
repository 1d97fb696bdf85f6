#include "imaging/kernels/PaddedFrame.h"

#include <cstring>

namespace zel {

void FillMargins(std::uint8_t* image, std::ptrdiff_t stride, int width, int height, int firstRow,
                 int endRow) {
  if (width < 8 || height < 8) return;
  const auto copyRow = [&](int to, int from) {
    std::memcpy(image + to * stride, image + from * stride, static_cast<std::size_t>(width));
  };
  if (firstRow <= 4 && endRow > 4) {
    for (int row = -2; row < 2; row += 2) {
      copyRow(row, 4);
      copyRow(row + 1, 3);
    }
    firstRow = -2;
  }
  if (endRow == height) {
    copyRow(height, height - 4);
    copyRow(height + 1, height - 3);
    endRow += 2;
  }
  for (int row = firstRow; row < endRow; ++row) {
    std::uint8_t* p = image + row * stride;
    p[-1] = p[1];
    p[-2] = p[2];
    p[width] = p[width - 2];
    p[width + 1] = p[width - 3];
  }
}

}  // namespace zel
