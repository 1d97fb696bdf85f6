#pragma once

#include <cstddef>
#include <cstdint>

namespace zel {

/// Phase of a sample in the mosaic: red lies where the row flag is 0 and the column flag 1, blue where the
/// row flag is 1 and the column flag 0, green elsewhere. A Bayer mode (0..3) is the phase of the top-left
/// sample.
struct BayerPhase {
  bool row = false, column = false;
};

constexpr BayerPhase PhaseOfMode(int bayerMode) {
  return {(bayerMode & 1) != 0, (bayerMode & 2) != 0};
}

/// Phase of the sample at (row, column) of a frame whose top-left sample has the phase `origin`.
constexpr BayerPhase PhaseAt(BayerPhase origin, int row, int column) {
  return {origin.row != ((row & 1) != 0), origin.column != ((column & 1) != 0)};
}

/// Bilinear colour of one position: the weights of red and of blue sum to 16, green is an average of two.
struct BayerSample {
  int red = 0, green = 0, blue = 0;
};

/// Reads up to two rows above and one below `p`, two samples to the left and one to the right; the colour
/// found is that of the corner between `p` and its upper left neighbour. `p[i]` is the i-th sample from
/// there, `pitch` counts samples.
template <class Samples>
BayerSample DirectColorAt(Samples p, std::ptrdiff_t pitch, bool rowFlag, bool columnFlag) {
  // Red and blue exchange places between (0, 0) and (1, 1), and between (0, 1) and (1, 0).
  if (rowFlag == columnFlag) {
    const int beside = 9 * p[-1] + 3 * p[-2 * pitch - 1] + 3 * p[1] + p[-2 * pitch + 1];
    const int above = 9 * p[-pitch] + 3 * p[-pitch - 2] + 3 * p[pitch] + p[pitch - 2];
    const int green = (p[-pitch - 1] + p[0]) >> 1;
    return rowFlag ? BayerSample{above, green, beside} : BayerSample{beside, green, above};
  }
  const int here = 9 * p[0] + 3 * p[-2 * pitch] + 3 * p[-2] + p[-2 * pitch - 2];
  const int diagonal = 9 * p[-pitch - 1] + 3 * p[-pitch + 1] + 3 * p[pitch - 1] + p[pitch + 1];
  const int green = (p[-pitch] + p[-1]) >> 1;
  return rowFlag ? BayerSample{diagonal, green, here} : BayerSample{here, green, diagonal};
}

}  // namespace zel
