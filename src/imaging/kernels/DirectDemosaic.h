#pragma once

#include <cstddef>
#include <cstdint>

#include "imaging/ColorGains.h"
#include "imaging/kernels/BayerTaps.h"

namespace zel {

/// The plain bilinear picture of a mosaic of at least 5 x 5 samples (`pitch` in bytes), written as 32-bit
/// pixels: rows firstRow..endRow-1, of which those from 2 to height - 3 are computed and the others repeat
/// the nearest computed one, as do the outer two columns. Gains (128 is unity) count within 0..2^19.
void DirectDemosaic(const std::uint8_t* frame, std::ptrdiff_t pitch, int width, int height, BayerPhase phase,
                    const ColorGains& gains, int firstRow, int endRow, std::uint8_t* out,
                    std::ptrdiff_t outStride);

/// The same with green alone, as grey pixels without gains.
void DirectDemosaicGrey(const std::uint8_t* frame, std::ptrdiff_t pitch, int width, int height,
                        BayerPhase phase, int firstRow, int endRow, std::uint8_t* out,
                        std::ptrdiff_t outStride);

}  // namespace zel
