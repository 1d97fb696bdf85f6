#pragma once

#include <cstddef>
#include <cstdint>

#include "imaging/kernels/MosaicSums.h"
#include "platform/ComponentTypes.h"

namespace zel {

/// Automatic white balance: finds the three colour gains (128 is unity, green is the reference) that make a
/// frame neutral. Where a frame says nothing about a colour, the gains stay as they were passed in.
class CWhiteBalance {
 public:
  CWhiteBalance() = default;
  virtual ~CWhiteBalance() = default;

  /// Fits the statistics to frames of width x height samples; true when modes 2 and 3 can use them, false for
  /// less than one cell.
  bool Allocate(LONG width, LONG height);

  /// `modeIndex` 0: grey world, 1 and 2: mean colour without dark and outlying cells (grey world while there
  /// are no statistics). `workImage` points at the image's first sample, whose rows have slack; `workStride`
  /// is in bytes.
  void ComputeGains(LONG modeIndex, const unsigned char* workImage, LONG workStride, LONG bayerMode,
                    LONG width, LONG height, LONG* r, LONG* g, LONG* b);

  /// Grey world from the sums over a whole mosaic of this size.
  static void GreyWorldGains(const MosaicSums& sums, LONG bayerMode, LONG width, LONG height, LONG* r,
                             LONG* g, LONG* b);

 private:
  LONG width_ = 0;
  LONG height_ = 0;
};

/// Grey world over a whole 8-bit mosaic of sourceWidth x height samples without row gaps.
void GreyWorldGains24(const unsigned char* frame, LONG sourceWidth, LONG height, LONG bayerMode, LONG* r,
                      LONG* g, LONG* b);

/// Gains that turn the mean colour of a mosaic's nearly white pixels white; red 128, green 100, blue 128 when
/// it has none. Reads two-byte samples, little-endian, with a row pitch of `sourceWidth` samples.
void WhitePointGains24(const unsigned char* frame, LONG sourceWidth, LONG width, LONG height, LONG bayerMode,
                       LONG* r, LONG* g, LONG* b);

}  // namespace zel
