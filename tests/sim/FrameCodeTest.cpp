#include "sim/FrameCode.h"

#include <gtest/gtest.h>

#include <vector>

namespace zel {
namespace {

struct Canvas {
  int width, height, bytesPerPixel;
  std::ptrdiff_t stride = std::ptrdiff_t{width} * bytesPerPixel + 5;
  std::vector<std::uint8_t> bytes =
      std::vector<std::uint8_t>(static_cast<std::size_t>(stride) * static_cast<std::size_t>(height), 128);

  /// Paints a bar; a black of 40 and a white of 180 are what a low contrast setting leaves.
  void Paint(std::uint32_t number, bool atBottom) {
    const FrameCodeCells cells = EncodeFrameNumber(number);
    const int rows = FrameCodeHeight(width, height);
    for (int n = 0; n < rows; ++n) {
      const int y = atBottom ? height - 1 - n : n;
      for (int x = 0; x < width * bytesPerPixel; ++x) {
        const bool white = cells[static_cast<std::size_t>(FrameCodeCell(x / bytesPerPixel, width))];
        bytes[static_cast<std::size_t>(y * stride + x)] = white ? 180 : 40;
      }
    }
  }

  FrameCodes Read() const { return ReadFrameCodes(bytes.data(), width, height, stride, bytesPerPixel); }
  std::optional<std::uint32_t> Number() const {
    return ReadFrameNumber(bytes.data(), width, height, stride, bytesPerPixel);
  }
};

TEST(FrameCode, ReadsWhatWasPrinted) {
  for (const int width : {176, 177, 333, 1280, 4896}) {
    for (const int bytesPerPixel : {1, 2, 3, 4}) {
      for (const std::uint32_t number : {0u, 1u, 0x80000000u, 0xDEADBEEFu, 0xFFFFFFFFu}) {
        Canvas canvas{width, 64, bytesPerPixel};
        canvas.Paint(number, false);
        EXPECT_FALSE(canvas.Number()) << "half a picture has no number";
        canvas.Paint(number, true);
        EXPECT_EQ(canvas.Number(), number) << width << " " << bytesPerPixel;
      }
    }
  }
}

TEST(FrameCode, TornPictureShowsBothNumbers) {
  Canvas canvas{640, 480, 4};
  canvas.Paint(41, false);
  canvas.Paint(42, true);
  EXPECT_TRUE(canvas.Read().Torn());
  EXPECT_EQ(canvas.Read().top, 41u);
  EXPECT_EQ(canvas.Read().bottom, 42u);
  EXPECT_FALSE(canvas.Number());
}

}  // namespace
}  // namespace zel
