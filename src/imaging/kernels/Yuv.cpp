#include "imaging/kernels/Yuv.h"

#include <algorithm>
#include <array>

namespace zel {
namespace {

constexpr int FloorDivide(int n, int d) {
  return n / d - (n % d < 0 ? 1 : 0);
}

/// What a chroma byte adds to the luminance, by a coefficient in hundred-thousandths.
constexpr std::array<std::int16_t, 256> ChromaTable(int coefficient) {
  std::array<std::int16_t, 256> table{};
  for (int i = 0; i < 256; ++i) {
    table[static_cast<std::size_t>(i)] =
        static_cast<std::int16_t>(FloorDivide((i - 128) * coefficient + 50000, 100000));
  }
  return table;
}

constexpr auto kRedOfV = ChromaTable(114000);
constexpr auto kBlueOfU = ChromaTable(177200);

// Rounding may be done on the chroma alone, because the luminance is whole.
int GreenOf(int u, int v) {
  return FloorDivide(50000 - 34414 * (u - 128) - 71414 * (v - 128), 100000);
}

std::uint8_t Limit(int v) {
  return static_cast<std::uint8_t>(std::clamp(v, 0, 255));
}

}  // namespace

void YuvToPixels(const std::uint8_t* __restrict yuv, std::size_t groups, std::uint8_t* __restrict bgra) {
  for (std::size_t i = 0; i < groups; ++i, yuv += 4) {
    const int red = kRedOfV[yuv[3]], green = GreenOf(yuv[1], yuv[3]), blue = kBlueOfU[yuv[1]];
    for (const int y : {yuv[0], yuv[2]}) {
      bgra[0] = Limit(y + blue);
      bgra[1] = Limit(y + green);
      bgra[2] = Limit(y + red);
      bgra[3] = 255;
      bgra += 4;
    }
  }
}

}  // namespace zel
