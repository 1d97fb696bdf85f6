#include "imaging/kernels/MosaicSums.h"

namespace zel {

MosaicSums SumMosaic(const std::uint8_t* frame, std::ptrdiff_t stride, int width, int height) {
  MosaicSums sums;
  for (int row = 0; row < height; ++row) {
    const std::uint8_t* p = frame + row * stride;
    // 32 bits hold a row of 2^24 samples of one parity.
    std::uint32_t even = 0, odd = 0;
    int column = 0;
    for (; column + 1 < width; column += 2) {
      even += p[column];
      odd += p[column + 1];
    }
    if (column < width) even += p[column];
    sums.at[row & 1][0] += even;
    sums.at[row & 1][1] += odd;
  }
  return sums;
}

}  // namespace zel
