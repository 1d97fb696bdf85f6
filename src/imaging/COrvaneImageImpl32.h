#pragma once

#include "imaging/COrvaneImageImpl.h"
#include "imaging/DirectPicture.h"

namespace zel {

/// The image object for every output format but 24-bit pixels.
class COrvaneImageImpl32 : public COrvaneImageImpl {
 public:
  using COrvaneImageImpl::COrvaneImageImpl;

  void AllocateBuffers() override;
  bool SaveToFile(const OLECHAR* path) override;
  bool ConvertRaw(unsigned char* frame) override;
  bool ConvertComplementary(unsigned char* frame) override;
  DWORD GetMeanLuminance() override;

  /// The direct kernels: the plain bilinear picture of an 8-bit frame (row pitch: source width), into the
  /// output with its top left at (x, y); a rectangle that does not fit there is not drawn. Gamma and colour
  /// matrix do not act on it.
  void DemosaicDirectColor(LONG x, LONG y, LONG width, LONG height, const unsigned char* frame,
                           LONG bayerMode, LONG gainR, LONG gainG, LONG gainB);
  void DemosaicDirectMono(LONG x, LONG y, LONG width, LONG height, const unsigned char* frame,
                          LONG bayerMode);

  /// Palette of 256 greys, brightened by a third.
  static const std::array<RGBQUAD, 256>& GreyPalette();

 private:
  void SortTwoTaps(std::uint8_t* frame, const FrameSettings& settings);
  void Unpack(std::uint8_t* frame, const FrameSettings& settings, LONG firstRow, LONG endRow) const;
  /// Sums rows for grey world as the kernels see them: the first two rows are those that stand in for them.
  void AddRows(const SampleFrame& frame, LONG firstRow, LONG endRow, MosaicSums& sums) const;
  void BeginPicture(const SampleFrame& frame, LONG rows, const FrameSettings& settings);
  void WriteRows(const SampleFrame& frame, LONG endRow, const FrameSettings& settings);
  void DemosaicDirect(LONG x, LONG y, const MosaicFrame& frame, const ColorGains& gains, bool grey);
  /// Where a rectangle begins in the output; null when it does not lie inside.
  std::uint8_t* OutputAt(LONG x, LONG y, LONG width, LONG height) const;

  DirectPicture direct_;
  LONG written_ = 0;  ///< rows of the picture that the table-driven kernels have made
};

}  // namespace zel
