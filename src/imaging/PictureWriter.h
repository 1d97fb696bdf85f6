#pragma once

#include <cstddef>
#include <cstdint>

#include "imaging/ScratchBuffer.h"
#include "imaging/kernels/PlaneRow.h"
#include "imaging/kernels/Tones.h"

namespace zel {

/// Where a picture goes; `stride` in bytes, `pixelBytes` 3 or 4.
struct PictureTarget {
  std::uint8_t* pixels = nullptr;
  std::ptrdiff_t stride = 0;
  int width = 0, height = 0;
  int pixelBytes = 4;
  bool grey = false;  ///< rows have one plane and get no tones
};

/// The last steps of every conversion, row by row from the top: tones, sharpness, pixels. Only the few rows
/// that sharpness looks at are held, as planes, so that a picture's pixels are written once.
class PictureWriter {
 public:
  /// Room for rows of up to this width; false without memory.
  [[nodiscard]] bool Allocate(int width);

  /// `sharpness` is 0..256; pictures below 4 x 4 get none. Sharpness adds to each colour the difference to
  /// the mean of the 4 x 4 block from two rows above to one below and two columns left to one right, times
  /// sharpness / 10; the first two rows and columns stay, the last ones compare with the mean beside them.
  void Begin(const PictureTarget& target, const PixelTones& tones, int sharpness);

  /// The next row is put here, then finished.
  PlaneRow NextRow() const { return Row(row_ % kRows); }
  void FinishRow();

 private:
  static constexpr int kRows = 4;  // as high as a block of the sharpness

  PlaneRow Row(int index) const;
  void Sharpen(int row);
  void Store(int row, const PlaneRow& colors);

  ScratchBuffer planes_;  ///< the last rows, and a sharpened one
  ScratchBuffer sums_;
  std::size_t pitch_ = 0;  ///< of a plane's row, with its slack

  PictureTarget target_;
  PixelTones tones_;
  int sharpness_ = 0;
  bool streaming_ = false;
  int row_ = 0;
};

}  // namespace zel
