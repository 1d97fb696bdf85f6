#pragma once

#include <cstddef>
#include <cstdint>

namespace zel {

/// Words of scratch that `SharpenRow` needs for a row of this width.
constexpr std::size_t SharpenScratchWords(int width) {
  return static_cast<std::size_t>(width) + 4 * 64;
}

/// Sharpens one row of one colour: adds the difference to the mean of the 4 x 4 block from two columns left
/// to one right, times strength / 10, truncated. `block` are the four rows of the blocks; `row` is the one
/// that is sharpened, all with slack, at least 4 wide. The first two columns stay; the last compares with the
/// mean beside it. `strength` is 0..256.
void SharpenRow(const std::uint8_t* const block[4], const std::uint8_t* row, int width, int strength,
                std::int16_t* scratch, std::uint8_t* out);

}  // namespace zel
