#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

/// The frame number as a bar of black and white cells at the top and again at the bottom of a picture, so
/// that a program sees dropped, repeated and torn frames.
namespace zel {

/// White and black; 32 bits of the number, highest first; 8 check bits; black and white.
constexpr int kFrameCodeCells = 44;
using FrameCodeCells = std::array<bool, kFrameCodeCells>;  ///< true = white

FrameCodeCells EncodeFrameNumber(std::uint32_t number);

/// Rows of each of the two bars in a picture of this size; 0 when the picture is too small for them.
int FrameCodeHeight(int width, int height);

/// The cell that column x of a picture belongs to.
constexpr int FrameCodeCell(int x, int width) {
  return static_cast<int>(static_cast<std::int64_t>(x) * kFrameCodeCells / width);
}

/// What the two bars say; nothing where one can't be read.
struct FrameCodes {
  std::optional<std::uint32_t> top, bottom;

  /// The picture's ends come from different frames.
  bool Torn() const { return top && bottom && *top != *bottom; }
};

/// Reads both bars of a picture with the top row first: raw samples of 1 byte or 2 (little-endian), or pixels
/// of 3 or 4 bytes whose first three are colours. `stride` is the distance of rows in bytes.
FrameCodes ReadFrameCodes(const std::uint8_t* pixels, int width, int height, std::ptrdiff_t stride,
                          int bytesPerPixel);

/// The frame number, or nothing when the picture is torn or has none.
std::optional<std::uint32_t> ReadFrameNumber(const std::uint8_t* pixels, int width, int height,
                                             std::ptrdiff_t stride, int bytesPerPixel);

}  // namespace zel
