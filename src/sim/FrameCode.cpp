#include "sim/FrameCode.h"

#include <algorithm>

#include "common/BytePacking.h"

namespace zel {
namespace {

constexpr int kMinCellWidth = 4;  // pixels; narrower ones would bleed into each other when demosaicked
constexpr int kMinHeight = 8;     // rows of a bar, for the same reason
constexpr int kHeightPart = 40;   // of the picture's height
constexpr int kFirstBit = 2, kCheckBits = 8;

std::uint8_t Check(std::uint32_t number) {
  // The start value keeps an even picture from reading as number 0.
  unsigned sum = 0x5A;
  for (unsigned n = 0; n < 4; ++n) sum = sum * 31 + ByteOf(number, n);
  return static_cast<std::uint8_t>(sum);
}

struct View {
  const std::uint8_t* pixels;
  std::ptrdiff_t stride;
  int bytesPerPixel;

  int Brightness(int x, int y) const {
    const std::uint8_t* const pixel = pixels + y * stride + std::ptrdiff_t{x} * bytesPerPixel;
    switch (bytesPerPixel) {
      case 1:
        return *pixel;
      case 2:
        return FromBytes16(pixel[0], pixel[1]);
      default:
        return pixel[0] + pixel[1] + pixel[2];
    }
  }

  /// Over four neighbours: every colour of a mosaic counts.
  int Around(int x, int y) const {
    return Brightness(x - 1, y - 1) + Brightness(x, y - 1) + Brightness(x - 1, y) + Brightness(x, y);
  }
};

std::optional<std::uint32_t> ReadBar(const View& view, int width, int y) {
  std::array<int, kFrameCodeCells> levels;
  for (int cell = 0; cell < kFrameCodeCells; ++cell) {
    const auto centre = (std::int64_t{2} * cell + 1) * width / (2 * kFrameCodeCells);
    levels[static_cast<std::size_t>(cell)] = view.Around(static_cast<int>(centre), y);
  }
  const int white = std::min(levels.front(), levels.back());
  const int black = std::max(levels[1], levels[kFrameCodeCells - 2]);
  if (4 * (white - black) < white + 32) return {};  // too little contrast to be a bar

  int cell = kFirstBit;
  const auto next = [&](int count) {
    std::uint32_t value = 0;
    for (; count > 0; --count)
      value = value << 1 | (2 * levels[static_cast<std::size_t>(cell++)] > white + black);
    return value;
  };
  const std::uint32_t number = next(32);
  if (next(kCheckBits) != Check(number)) return {};
  return number;
}

}  // namespace

FrameCodeCells EncodeFrameNumber(std::uint32_t number) {
  FrameCodeCells cells{};
  cells.front() = cells.back() = true;
  std::size_t cell = kFirstBit;
  for (int bit = 31; bit >= 0; --bit) cells[cell++] = (number >> bit & 1) != 0;
  for (int bit = kCheckBits - 1; bit >= 0; --bit) cells[cell++] = (Check(number) >> bit & 1) != 0;
  return cells;
}

int FrameCodeHeight(int width, int height) {
  const int rows = std::max(kMinHeight, height / kHeightPart);
  return width < kMinCellWidth * kFrameCodeCells || height < 8 * kMinHeight ? 0 : rows;
}

FrameCodes ReadFrameCodes(const std::uint8_t* pixels, int width, int height, std::ptrdiff_t stride,
                          int bytesPerPixel) {
  const int rows = FrameCodeHeight(width, height);
  if (rows == 0) return {};
  const View view{pixels, stride, bytesPerPixel};
  return {ReadBar(view, width, rows / 2), ReadBar(view, width, height - rows / 2)};
}

std::optional<std::uint32_t> ReadFrameNumber(const std::uint8_t* pixels, int width, int height,
                                             std::ptrdiff_t stride, int bytesPerPixel) {
  const FrameCodes codes = ReadFrameCodes(pixels, width, height, stride, bytesPerPixel);
  return codes.Torn() || !codes.bottom ? std::nullopt : codes.top;
}

}  // namespace zel
