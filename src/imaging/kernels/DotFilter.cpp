#include "imaging/kernels/DotFilter.h"

#include <cstdlib>

namespace zel {

void DotFilter(std::uint8_t* frame, std::ptrdiff_t pitch, int width, int height, int threshold) {
  for (int row = 2; row < height - 2; ++row) {
    std::uint8_t* line = frame + row * pitch;
    for (int column = 2; column < width - 2; ++column) {
      std::uint8_t* p = line + column;
      const int mean = (p[-2] + p[2] + p[-2 * pitch] + p[2 * pitch]) >> 2;
      if (std::abs(*p - mean) >= threshold) *p = static_cast<std::uint8_t>(mean);
    }
  }
}

}  // namespace zel
