#pragma once

#include <cstddef>
#include <cstdint>

namespace zel {

/// A mosaic of complementary colours (one byte per sample) to pixels: each takes the 2 x 2 cell whose top
/// left sample lies at its own place. Rows firstRow..endRow-1, of which the picture's last row has no cell
/// and must not be one, and columns 1..width-1 are written; so are only blue, green and red of a pixel. A
/// pixel whose cell ends beyond frame[0..frameBytes) stays.
void DecodeComplementary(const std::uint8_t* frame, std::size_t frameBytes, std::size_t pitch, int width,
                         int firstRow, int endRow, int pixelBytes, std::uint8_t* out,
                         std::ptrdiff_t outStride);

}  // namespace zel
