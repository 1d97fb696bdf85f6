#pragma once

#include <cstddef>
#include <cstdint>

#include "imaging/kernels/BayerTaps.h"
#include "imaging/kernels/PlaneRow.h"

namespace zel {

/// Gradient-corrected linear interpolation in a 5 x 5 neighbourhood (H. S. Malvar, L. He, R. Cutler, ICASSP
/// 2004) of one row: (sum in sixteenths + 8) >> 4, limited to 0..255. A grey row becomes its green.
///
/// `samples` points at the row's first sample, whose phase is `phase`; two rows above and below are read as
/// well, all with slack.
void GradientRow(const std::uint8_t* samples, std::ptrdiff_t stride, int width, BayerPhase phase,
                 const PlaneRow& out);

}  // namespace zel
