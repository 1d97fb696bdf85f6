#pragma once

#include <cstdint>

#include "imaging/ColorGains.h"
#include "imaging/kernels/BayerTaps.h"
#include "imaging/kernels/PlaneRow.h"

namespace zel {

/// Four rows of a mosaic, the third being the one that is converted; each with slack.
struct MosaicRows {
  const std::uint8_t* farAbove;
  const std::uint8_t* above;
  const std::uint8_t* here;
  const std::uint8_t* below;
};

/// The plain bilinear colours of one row, at the point between four samples up and left of each, with gains
/// (128 is unity, above 2^19 counts as that, negative as 0). A grey row becomes green alone, without gains.
/// `phase` is that of the row's first sample. The first two columns and the last are without meaning.
void DirectRow(const MosaicRows& rows, int width, BayerPhase phase, const ColorGains& gains,
               const PlaneRow& out);

}  // namespace zel
