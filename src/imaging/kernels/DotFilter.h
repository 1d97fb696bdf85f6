#pragma once

#include <cstddef>
#include <cstdint>

namespace zel {

/// Replaces, in raster order and in place, every 8-bit sample that differs by `threshold` or more from the
/// mean of the four nearest of its colour. The outer two rows and columns stay. `pitch` in bytes, at least
/// `width`.
void DotFilter(std::uint8_t* frame, std::ptrdiff_t pitch, int width, int height, int threshold);

}  // namespace zel
