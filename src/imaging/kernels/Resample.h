#pragma once

#include <cstdint>

namespace zel {

/// Bilinear scaling of a 32-bit picture in 16.16 fixed point; rows without gaps. The last source row and
/// column only take part as neighbours, as the step is (source size - 1) / destination size. Nothing is
/// written when a destination size is below 1 or a source size below 2.
void ResampleBilinear(const std::uint8_t* source, int sourceWidth, int sourceHeight,
                      std::uint8_t* destination, int destinationWidth, int destinationHeight);

}  // namespace zel
