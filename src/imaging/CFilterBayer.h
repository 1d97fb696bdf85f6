#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "imaging/CWhiteBalance.h"
#include "imaging/ColorGains.h"
#include "imaging/ColorMatrix.h"
#include "imaging/PictureWriter.h"
#include "imaging/ScratchBuffer.h"
#include "imaging/kernels/BayerTaps.h"
#include "imaging/kernels/Tones.h"
#include "platform/ComponentTypes.h"

namespace zel {

/// A camera's frame of one-byte samples; pitch and size in bytes.
struct SampleFrame {
  const std::uint8_t* samples = nullptr;
  LONG pitch = 0;
  std::size_t bytes = 0;

  const std::uint8_t* Row(LONG row) const { return samples + std::ptrdiff_t{row} * pitch; }
};

/// Turns an 8-bit mosaic into pixels by way of a padded copy of it, the work frame, and keeps what that
/// needs: gamma tables, gains, colour matrix and white balance.
///
/// Setters and `BeginFrame` run under the image object's lock; `PrepareFrame` and the demosaicing outside, on
/// the values that the last `BeginFrame` and `SetGains` chose.
class CFilterBayer {
 public:
  CFilterBayer() = default;
  virtual ~CFilterBayer() = default;
  CFilterBayer(const CFilterBayer&) = delete;
  CFilterBayer& operator=(const CFilterBayer&) = delete;

  /// Makes the work frame and the white balance's statistics; nothing to do for the same size. False, and no
  /// work frame, for sizes below 1 or without memory.
  bool Allocate(LONG width, LONG height);

  /// Copies a frame (row pitch in bytes, 0 for the width) into the work frame and, from 8 x 8 on, continues
  /// it by two samples on each side in the mosaic's own phase. Rows not wholly inside `frameBytes` are
  /// black.
  void PrepareFrame(const unsigned char* frame, LONG pitch, std::size_t frameBytes = SIZE_MAX);
  /// Builds the table of an exponent in hundredths if it is not there yet; above 200 counts as 120.
  void SetGammaTable(LONG gamma);
  /// The same, and uses it from now on; 0 and below: no gamma.
  void SelectGamma(LONG gamma);
  /// Chooses gamma and colour matrix for the frame that is about to be converted.
  void BeginFrame(LONG gamma);

  void SetGains(LONG r, LONG g, LONG b);  ///< 128 is unity

  /// 32-bit pixels, rows without gaps, from `frame`, which is `WorkImage()`. Nothing without a work frame.
  void DemosaicColor(const unsigned char* frame, unsigned char* out, LONG width, LONG bayerMode);
  void DemosaicMono(const unsigned char* frame, unsigned char* out, LONG width, LONG bayerMode);

  /// The same as 24-bit pixels, with these gains and without matrix and gamma.
  void DemosaicColor24(const unsigned char* frame, unsigned char* out, LONG width, LONG bayerMode,
                       const PlaneGains& gains);
  void DemosaicMono24(const unsigned char* frame, unsigned char* out, LONG width, LONG bayerMode);

  /// The same in bands, which never leave the cache: `Writer().Begin`, for which `Tones` says what the
  /// table-driven kernels do to a colour, then bands of at most `kMaxBand` rows from top to bottom. Each is
  /// taken from the frame itself by way of the work frame's first rows; missing rows are black.
  static constexpr LONG kMaxBand = 16;
  PictureWriter& Writer() { return writer_; }
  PixelTones Tones() const;
  void DemosaicBand(const SampleFrame& frame, LONG firstRow, LONG endRow, LONG bayerMode);

  /// Automatic gains from the work frame; `gains` keeps what the frame says nothing about.
  void ComputeGains(LONG modeIndex, LONG bayerMode, ColorGains& gains);

  /// The first image sample of the work frame, or null; two rows and columns around it may be read.
  const unsigned char* WorkImage() const { return ImageOrigin(); }
  LONG WorkStride() const { return workStride_; }

  ColorMatrix& Matrix() { return matrix_; }
  const ColorMatrix& Matrix() const { return matrix_; }

 private:
  struct GammaTable {
    std::array<std::uint8_t, 256> entries;
    bool built = false;
  };

  void Demosaic(const unsigned char* frame, const PictureTarget& target, const PixelTones& tones,
                LONG bayerMode);
  /// Into a work row; rows not wholly inside the frame are black.
  void CopyRow(const SampleFrame& frame, LONG row, std::uint8_t* to) const;
  void DemosaicRows(LONG rows, BayerPhase phase);
  std::uint8_t* ImageOrigin() const;

  LONG width_ = 0, height_ = 0;
  LONG workStride_ = 0;  ///< bytes
  ScratchBuffer work_;
  ColorMatrix matrix_;
  FixedColorMatrix frameMatrix_;  ///< of the frame in conversion
  std::array<GammaTable, 201> gammaTables_;
  const std::uint8_t* gamma_ = nullptr;
  PlaneGains gains_;
  CWhiteBalance whiteBalance_;
  PictureWriter writer_;
};

}  // namespace zel
