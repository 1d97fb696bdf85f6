#pragma once

#include <cstdint>

#include "platform/ComponentTypes.h"

namespace zel {

/// The pixel memory that an application hands over in a VARIANT.
struct PixelMemory {
  std::uint8_t* data = nullptr;
  std::uint64_t size = 0;  ///< bytes

  bool Holds(std::int64_t bytes) const {
    return data && bytes >= 0 && static_cast<std::uint64_t>(bytes) <= size;
  }
  /// Rows that begin `stride` bytes (1 or more) apart; the last needs no padding behind it. A division,
  /// because the bytes of the largest sizes exceed 64 bits.
  constexpr bool HoldsRows(std::int64_t rows, std::int64_t stride, std::int64_t rowBytes) const {
    if (!data || rows < 1 || rowBytes < 1 || static_cast<std::uint64_t>(rowBytes) > size) return false;
    const std::uint64_t behindFirst = size - static_cast<std::uint64_t>(rowBytes);
    return static_cast<std::uint64_t>(rows - 1) <= behindFirst / static_cast<std::uint64_t>(stride);
  }
};

/// The elements of an array, given itself or by reference; no data when the variant holds no usable array.
PixelMemory ArrayOf(const VARIANT& variant);

/// The same for an array that will be written: one whose elements own something (texts, objects, variants)
/// has no data, because pixels in their place would be taken for pointers when the array is destroyed.
PixelMemory WritableArrayOf(const VARIANT& variant);

/// What a variant refers to that refers to another variant, as script hosts pass their variables; else
/// itself.
const VARIANT& Dereferenced(const VARIANT& variant);

/// The variable that a script host passes by reference and that holds nothing ("empty", or "null" as Python's
/// None arrives); else null.
VARIANT* EmptyVariable(const VARIANT& variant);

}  // namespace zel
