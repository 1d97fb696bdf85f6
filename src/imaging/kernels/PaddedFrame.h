#pragma once

#include <cstddef>
#include <cstdint>

namespace zel {

/// Continues a mosaic two samples beyond each edge, in its own phase. `image` points at its top left sample,
/// with room for two rows and two columns around it. Overwrites the first two image rows, which sensors
/// deliver unreliably, with rows 4 and 3. Nothing happens below 8 x 8.
void FillMargins(std::uint8_t* image, std::ptrdiff_t stride, int width, int height);

}  // namespace zel
