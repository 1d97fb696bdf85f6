#pragma once

#include <cstddef>
#include <cstdint>

namespace zel {

/// Replaces, in raster order and in place, every 8-bit sample of rows firstRow..endRow-1 that differs by
/// `threshold` (1..255) or more from the mean of the four nearest of its colour. The outer two rows and
/// columns of the frame stay. `pitch` in bytes, at least `width`. A frame may be filtered in bands from top
/// to bottom when the two rows below each band are there.
void DotFilter(std::uint8_t* frame, std::ptrdiff_t pitch, int width, int height, int firstRow, int endRow,
               int threshold);

}  // namespace zel
