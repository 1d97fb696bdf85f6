#include "imaging/kernels/Expand.h"

namespace zel {

void ExpandGrey(const std::uint8_t* __restrict grey, std::size_t pixels, std::uint8_t alpha,
                std::uint8_t* __restrict bgra) {
  for (std::size_t i = 0; i < pixels; ++i) {
    bgra[4 * i] = bgra[4 * i + 1] = bgra[4 * i + 2] = grey[i];
    bgra[4 * i + 3] = alpha;
  }
}

void ExpandPacked(const std::uint8_t* __restrict bgr, std::size_t pixels, std::uint8_t* __restrict bgra) {
  for (std::size_t i = 0; i < pixels; ++i) {
    for (std::size_t c = 0; c < 3; ++c) bgra[4 * i + c] = bgr[3 * i + c];
    bgra[4 * i + 3] = 255;
  }
}

}  // namespace zel
