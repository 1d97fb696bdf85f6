#pragma once

#include "imaging/COrvaneImageImpl.h"

namespace zel {

/// The image object for every output format but 24-bit pixels.
class COrvaneImageImpl32 : public COrvaneImageImpl {
 public:
  using COrvaneImageImpl::COrvaneImageImpl;

  bool SaveToFile(const OLECHAR* path) override;
  void ConvertRaw(unsigned char* frame) override;
  void ConvertComplementary(unsigned char* frame) override;
  DWORD GetMeanLuminance() override;

  /// The direct kernels: the plain bilinear picture of an 8-bit frame (row pitch: source width), into the
  /// output with its top left at (x, y); a rectangle that
  /// does not fit there is not drawn. Gamma and colour matrix do not
  /// act on it.
  void DemosaicDirectColor(LONG x, LONG y, LONG width, LONG height, const unsigned char* frame,
                           LONG bayerMode, LONG gainR, LONG gainG, LONG gainB);
  void DemosaicDirectMono(LONG x, LONG y, LONG width, LONG height, const unsigned char* frame,
                          LONG bayerMode);

  /// Palette of 256 greys, brightened by a third.
  static const std::array<RGBQUAD, 256>& GreyPalette();

 private:
  bool SortTwoTaps(std::uint8_t* frame, const FrameSettings& settings);
  void Demosaic(const std::uint8_t* frame, LONG rows, const FrameSettings& settings);
  /// Where a rectangle begins in the output; null when it does not lie inside.
  std::uint8_t* OutputAt(LONG x, LONG y, LONG width, LONG height) const;
};

}  // namespace zel
