#include "imaging/kernels/Luminance.h"

namespace zel {
namespace {

template <int kPixelBytes>
std::uint64_t Sum(const std::uint8_t* pixels, std::size_t count) {
  std::uint64_t sum = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint8_t* p = pixels + kPixelBytes * i;
    const float red = p[2], green = p[1], blue = p[0];
    sum += static_cast<unsigned>(static_cast<int>(0.299f * red + 0.587f * green + 0.114f * blue + 0.5f));
  }
  return sum;
}

}  // namespace

std::uint64_t SumLuminance(const std::uint8_t* pixels, std::size_t count, int pixelBytes) {
  return pixelBytes == 4 ? Sum<4>(pixels, count) : Sum<3>(pixels, count);
}

}  // namespace zel
