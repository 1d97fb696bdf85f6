#pragma once

#include <cstddef>
#include <cstdint>

namespace zel {

/// Continues rows firstRow..endRow-1 of a mosaic, filled from top to bottom, two samples beyond each edge in
/// its own phase. `image` points at its top left sample, with room for two rows and two columns around it.
/// Overwrites the first two image rows, which sensors deliver unreliably, with rows 4 and 3 as soon as these
/// are there; the rows above them come with them, those below the image with its last row. Nothing happens
/// below 8 x 8.
void FillMargins(std::uint8_t* image, std::ptrdiff_t stride, int width, int height, int firstRow, int endRow);

}  // namespace zel
