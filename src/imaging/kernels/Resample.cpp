#include "imaging/kernels/Resample.h"

#include <cstddef>
#include <cstring>

namespace zel {

namespace {

constexpr std::uint32_t kEvenBytes = 0x00FF00FFu;  // two channels at a time, each with room for 8 more bits

std::uint32_t Load(const std::uint8_t* pixel) {
  std::uint32_t value;
  std::memcpy(&value, pixel, sizeof value);
  return value;
}

}  // namespace

void ResampleBilinear(const std::uint8_t* source, int sourceWidth, int sourceHeight,
                      std::uint8_t* destination, int destinationWidth, int destinationHeight) {
  if (destinationWidth < 1 || destinationHeight < 1 || sourceWidth < 2 || sourceHeight < 2) return;
  const std::int64_t stepX = ((std::int64_t{sourceWidth} - 1) << 16) / destinationWidth;
  const std::int64_t stepY = ((std::int64_t{sourceHeight} - 1) << 16) / destinationHeight;
  const std::ptrdiff_t sourceStride = std::ptrdiff_t{sourceWidth} * 4;

  for (int row = 0; row < destinationHeight; ++row) {
    const std::int64_t y = row * stepY;
    const auto fy = static_cast<std::uint32_t>((y >> 8) & 255);
    const std::uint8_t* upper = source + (y >> 16) * sourceStride;
    for (int column = 0; column < destinationWidth; ++column, destination += 4) {
      const std::int64_t x = column * stepX;
      const auto fx = static_cast<std::uint32_t>((x >> 8) & 255);
      const std::uint8_t* corner = upper + (x >> 16) * 4;
      const std::uint32_t p00 = Load(corner);
      const std::uint32_t p01 = Load(corner + 4);
      const std::uint32_t p10 = Load(corner + sourceStride);
      const std::uint32_t p11 = Load(corner + sourceStride + 4);

      const std::uint32_t w11 = (fx * fy) >> 8;
      const std::uint32_t w01 = fx - w11;
      const std::uint32_t w10 = fy - w11;
      const std::uint32_t w00 = 256 - fx - fy + w11;
      const auto blend = [&](int shift) {
        return ((p00 >> shift) & kEvenBytes) * w00 + ((p01 >> shift) & kEvenBytes) * w01 +
               ((p10 >> shift) & kEvenBytes) * w10 + ((p11 >> shift) & kEvenBytes) * w11;
      };
      const std::uint32_t pixel = ((blend(0) >> 8) & kEvenBytes) | (blend(8) & ~kEvenBytes);
      std::memcpy(destination, &pixel, sizeof pixel);
    }
  }
}

}  // namespace zel
