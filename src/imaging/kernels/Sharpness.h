#pragma once

#include <cstddef>
#include <cstdint>

namespace zel {

/// Adds to each colour byte of a 32-bit picture table512[difference + 255], the difference being that to the
/// mean of the 4 x 4 block from two rows above to one below and from two columns left to one right. The first
/// two rows and columns and the fourth bytes stay; the last row and column compare with the nearest mean
/// there is. Pictures below 4 x 4 stay as they are. `blurred` is scratch of strideBytes x height bytes.
void Sharpen(std::uint8_t* bgra, int width, int height, std::ptrdiff_t strideBytes,
             const std::int32_t* table512, std::uint8_t* blurred);

}  // namespace zel
