#pragma once

#include <cstddef>
#include <cstdint>

namespace zel {

/// Bytes before and after a row of ours that kernels may read, and after it also write: they work in whole
/// vectors, of up to 64 bytes, and look at neighbours.
constexpr std::size_t kRowSlack = 128;

/// One picture row, each colour by itself, with slack. Grey rows have the same bytes three times.
struct PlaneRow {
  std::uint8_t* red = nullptr;
  std::uint8_t* green = nullptr;
  std::uint8_t* blue = nullptr;

  bool IsGrey() const { return red == blue; }
};

}  // namespace zel
