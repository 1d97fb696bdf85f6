#pragma once

#include <cstddef>
#include <cstdint>

#include "imaging/ColorGains.h"
#include "imaging/PictureWriter.h"
#include "imaging/ScratchBuffer.h"
#include "imaging/kernels/BayerTaps.h"

namespace zel {

/// A mosaic of 8-bit samples; `pitch` in bytes.
struct MosaicFrame {
  const std::uint8_t* samples = nullptr;
  std::ptrdiff_t pitch = 0;
  int width = 0, height = 0;
  BayerPhase phase;  ///< of the top left sample
};

/// The plain bilinear picture of a mosaic of at least 5 x 5 samples. Rows 2..height-3 and columns 2..width-3
/// are computed, the others repeat the nearest computed one.
class DirectPicture {
 public:
  /// Room for frames of up to this width; false without memory.
  [[nodiscard]] bool Allocate(int width);
  /// Where a frame of less than 5 x 5 has no picture.
  static bool Exists(int width, int height) { return width >= 5 && height >= 5; }

  void Begin(const MosaicFrame& frame, const ColorGains& gains);
  /// The next rows of the picture, up to `endRow`; needs the frame up to the second row after them.
  void WriteRows(int endRow, PictureWriter& writer);

 private:
  static constexpr int kRows = 4;  // that a row looks at

  /// A frame row with slack: itself, or a copy where the slack would lie outside the frame.
  const std::uint8_t* Row(int row);

  ScratchBuffer rows_;
  std::size_t pitch_ = 0;
  MosaicFrame frame_;
  ColorGains gains_;
  int next_ = 0;
};

}  // namespace zel
