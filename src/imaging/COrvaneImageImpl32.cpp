#include "imaging/COrvaneImageImpl32.h"

#include <algorithm>

#include "imaging/ImageFile.h"
#include "imaging/kernels/DotFilter.h"
#include "imaging/kernels/MosaicSums.h"
#include "imaging/kernels/PaddedFrame.h"
#include "imaging/kernels/Samples.h"
#include "imaging/kernels/WhitePixels.h"

namespace zel {
namespace {

// Rows that go through all steps together: with samples, work frame and pixels they stay in the second-level
// cache.
constexpr LONG kBandRows = CFilterBayer::kMaxBand;

}  // namespace

void COrvaneImageImpl32::AllocateBuffers() {
  COrvaneImageImpl::AllocateBuffers();
  if (layout_.pixelBytes != 4 || !createFilter_ || direct_.Allocate(layout_.width)) return;
  FreeBuffers();
  layout_ = {};
}

bool COrvaneImageImpl32::SaveToFile(const OLECHAR* path) {
  if (!path || layout_.pixelBytes != 4) return false;
  return SaveBandedBitmap(path, output_.Data(), layout_.width, layout_.height, layout_.outputStride);
}

const std::array<RGBQUAD, 256>& COrvaneImageImpl32::GreyPalette() {
  static constexpr auto kPalette = [] {
    std::array<RGBQUAD, 256> palette{};
    for (int i = 0; i < 256; ++i) {
      const auto level = static_cast<std::uint8_t>(std::min(255, i * 4 / 3));
      palette[static_cast<std::size_t>(i)] = {level, level, level, 0};
    }
    return palette;
  }();
  return kPalette;
}

void COrvaneImageImpl32::SortTwoTaps(std::uint8_t* frame, const FrameSettings& settings) {
  const auto samples = static_cast<std::size_t>(settings.format.sourceWidth);
  const std::size_t rowBytes = samples * settings.SampleBytes();
  for (LONG row = 0; row < settings.format.sourceHeight; ++row) {
    SortTwoTapRow(frame + std::size_t(row) * rowBytes, samples, settings.SampleBytes(), rowBuffer_.Data());
  }
}

void COrvaneImageImpl32::Unpack(std::uint8_t* frame, const FrameSettings& settings, LONG firstRow,
                                LONG endRow) const {
  const LONG end = std::min(endRow, settings.format.sourceHeight);
  if (firstRow >= end) return;
  const auto width = std::size_t(settings.format.sourceWidth), first = std::size_t(firstRow) * width;
  PackTenBit(frame + 2 * first, std::size_t(end - firstRow) * width, frame + first);
  if (settings.tones.contrast != 0) ApplyContrast(frame, settings, firstRow, endRow);
}

bool COrvaneImageImpl32::ConvertRaw(unsigned char* frame) {
  if (!frame || layout_.pixelBytes != 4) return false;
  FrameSettings settings = BeginConversion();
  const FrameFormat& format = settings.format;
  ToneSettings& tones = settings.tones;
  std::size_t frameBytes = settings.SourceSamples() * settings.SampleBytes();
  if (frameBytes == 0 || !filter_.WorkImage()) return false;

  if (format.twoTap != 0) SortTwoTaps(frame, settings);
  const bool packed = format.twoTap == 0 && !format.eightBitTransfer;
  if (packed) frameBytes /= 2;
  const LONG height = layout_.height;
  const LONG rows =
      RowsInside(frameBytes, std::size_t(format.sourceWidth), std::size_t(layout_.width), height);
  // Where the direct kernels have no picture, or the frame ends early, the output is not this frame's.
  const bool whole =
      rows == height && (format.bayerDecodingMethod == 0 || DirectPicture::Exists(layout_.width, height));
  const bool dots =
      tones.dotFilterEnabled != 0 && tones.dotFilterThreshold >= 1 && tones.dotFilterThreshold <= 255;
  const bool greyWorld = tones.autoWhiteBalance == 1;
  const bool statistics = tones.autoWhiteBalance == 2 || tones.autoWhiteBalance == 3;
  // These look at the whole frame before the first pixel can be made.
  const bool wholeFrame = greyWorld || statistics || format.whitePixelCanceling;
  const SampleFrame samples{frame, format.sourceWidth, frameBytes};

  if (!wholeFrame) BeginPicture(samples, rows, settings);
  MosaicSums sums;
  for (LONG unpacked = 0, prepared = 0; prepared < height;) {
    const LONG band = unpacked;
    unpacked = std::min(unpacked + kBandRows, height);
    if (packed) Unpack(frame, settings, band, unpacked);
    // The dot filter looks two rows further down, and so do the kernels.
    const LONG clean = dots && unpacked < height ? unpacked - 2 : unpacked;
    if (dots) {
      DotFilter(frame, format.sourceWidth, std::min(layout_.width, format.sourceWidth), rows, prepared, clean,
                tones.dotFilterThreshold);
    }
    if (greyWorld) AddRows(samples, prepared, std::min(clean, rows), sums);
    prepared = clean;
    if (!wholeFrame) WriteRows(samples, prepared < height ? prepared - 2 : height, settings);
  }
  if (!wholeFrame) return whole;

  if (greyWorld || statistics) {
    LONG r = tones.gains.r, g = tones.gains.g, b = tones.gains.b;
    if (greyWorld) {
      CWhiteBalance::GreyWorldGains(sums, format.bayerMode, layout_.width, height, &r, &g, &b);
      tones.gains = {r, g, b};
    } else {
      filter_.PrepareFrame(frame, format.sourceWidth, frameBytes);
      filter_.ComputeGains(tones.autoWhiteBalance - 1, format.bayerMode, tones.gains);
    }
    StoreGains(tones.gains);
  }
  if (format.whitePixelCanceling) {
    CancelWhitePixels(frame, frameBytes, format.fullWidth, height, tones.whitePixelThreshold,
                      format.bayerMode, tones.gains);
  }
  BeginPicture(samples, rows, settings);
  WriteRows(samples, height, settings);
  return whole;
}

void COrvaneImageImpl32::AddRows(const SampleFrame& frame, LONG firstRow, LONG endRow,
                                 MosaicSums& sums) const {
  const LONG width = layout_.width;
  if (firstRow == 0) {
    // Both in one: the second row is as far from the first as the rows that stand in for them are.
    const LONG top = RowBehind(0, width, layout_.height), next = RowBehind(1, width, layout_.height);
    if (top < endRow)
      AddMosaic(frame.Row(top), std::ptrdiff_t{next - top} * frame.pitch, width, std::min<LONG>(endRow, 2),
                sums);
  }
  const LONG first = std::max<LONG>(firstRow, 2);
  if (first < endRow) AddMosaic(frame.Row(first), frame.pitch, width, endRow - first, sums);
}

void COrvaneImageImpl32::BeginPicture(const SampleFrame& frame, LONG rows, const FrameSettings& settings) {
  const FrameFormat& format = settings.format;
  const auto& [r, g, b] = settings.tones.gains;
  PictureTarget target{output_.Data(),  layout_.outputStride, layout_.width, layout_.height, 4,
                       !format.colorful};
  written_ = 0;
  if (format.bayerDecodingMethod == 0) {
    filter_.SetGains(r, g, b);
    filter_.Writer().Begin(target, filter_.Tones(), settings.tones.sharpness);
    return;
  }
  target.height = rows;
  direct_.Begin({frame.samples, frame.pitch, layout_.width, rows, PhaseOfMode(format.bayerMode)}, {r, g, b});
  filter_.Writer().Begin(target, {}, settings.tones.sharpness);
}

void COrvaneImageImpl32::WriteRows(const SampleFrame& frame, LONG endRow, const FrameSettings& settings) {
  if (settings.format.bayerDecodingMethod != 0) return direct_.WriteRows(endRow, filter_.Writer());
  while (written_ < endRow) {
    const LONG end = std::min(written_ + CFilterBayer::kMaxBand, endRow);
    filter_.DemosaicBand(frame, written_, end, settings.format.bayerMode);
    written_ = end;
  }
}

void COrvaneImageImpl32::DemosaicDirectColor(LONG x, LONG y, LONG width, LONG height,
                                             const unsigned char* frame, LONG bayerMode, LONG gainR,
                                             LONG gainG, LONG gainB) {
  DemosaicDirect(x, y, {frame, Shape().sourceWidth, width, height, PhaseOfMode(bayerMode)},
                 {gainR, gainG, gainB}, false);
}

void COrvaneImageImpl32::DemosaicDirectMono(LONG x, LONG y, LONG width, LONG height,
                                            const unsigned char* frame, LONG bayerMode) {
  DemosaicDirect(x, y, {frame, Shape().sourceWidth, width, height, PhaseOfMode(bayerMode)}, {}, true);
}

void COrvaneImageImpl32::DemosaicDirect(LONG x, LONG y, const MosaicFrame& frame, const ColorGains& gains,
                                        bool grey) {
  std::uint8_t* out = OutputAt(x, y, frame.width, frame.height);
  if (!out || !frame.samples || !filter_.WorkImage()) return;
  direct_.Begin(frame, gains);
  filter_.Writer().Begin({out, layout_.outputStride, frame.width, frame.height, 4, grey}, {}, 0);
  direct_.WriteRows(frame.height, filter_.Writer());
}

std::uint8_t* COrvaneImageImpl32::OutputAt(LONG x, LONG y, LONG width, LONG height) const {
  const bool inside = layout_.pixelBytes == 4 && x >= 0 && y >= 0 && width >= 0 && height >= 0 &&
                      x <= layout_.width - width && y <= layout_.height - height;
  if (!inside) return nullptr;
  return output_.Data() + std::ptrdiff_t{y} * layout_.outputStride + std::ptrdiff_t{x} * 4;
}

bool COrvaneImageImpl32::ConvertComplementary(unsigned char* frame) {
  return DecodeComplementaryFrame(frame, 4);
}

DWORD COrvaneImageImpl32::GetMeanLuminance() {
  return MeanLuminance(4);
}

}  // namespace zel
