#include "imaging/COrvaneImageImpl32.h"

#include <algorithm>

#include "imaging/ImageFile.h"
#include "imaging/kernels/DirectDemosaic.h"
#include "imaging/kernels/DotFilter.h"
#include "imaging/kernels/Samples.h"
#include "imaging/kernels/Sharpness.h"
#include "imaging/kernels/WhitePixels.h"

namespace zel {

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

bool COrvaneImageImpl32::SortTwoTaps(std::uint8_t* frame, const FrameSettings& settings) {
  const auto samples = static_cast<std::size_t>(settings.format.sourceWidth);
  const std::size_t rowBytes = samples * settings.SampleBytes();
  // Grows only when the source width was set after the buffers were allocated.
  if (!rowBuffer_.Reserve(rowBytes)) return false;
  for (LONG row = 0; row < settings.format.sourceHeight; ++row) {
    SortTwoTapRow(frame + std::size_t(row) * rowBytes, samples, settings.SampleBytes(), rowBuffer_.Data());
  }
  return true;
}

void COrvaneImageImpl32::ConvertRaw(unsigned char* frame) {
  if (!frame || layout_.pixelBytes != 4) return;
  FrameSettings settings = BeginConversion();
  const FrameFormat& format = settings.format;
  ToneSettings& tones = settings.tones;
  std::size_t frameBytes = settings.SourceSamples() * settings.SampleBytes();
  if (frameBytes == 0) return;

  if (format.twoTap != 0) {
    if (!SortTwoTaps(frame, settings)) return;
  } else if (!format.eightBitTransfer) {
    frameBytes /= 2;
    PackTenBit(frame, std::min(frameBytes, std::size_t(format.sourceWidth) * std::size_t(layout_.height)),
               frame);
    if (tones.contrast != 0) ApplyContrast(frame, settings);
  }

  const auto width = static_cast<std::size_t>(layout_.width);
  const LONG rows = RowsInside(frameBytes, std::size_t(format.sourceWidth), width, layout_.height);
  if (tones.dotFilterEnabled != 0 && tones.dotFilterThreshold >= 1 && tones.dotFilterThreshold <= 255) {
    DotFilter(frame, format.sourceWidth, std::min(layout_.width, format.sourceWidth), rows,
              tones.dotFilterThreshold);
  }
  filter_.PrepareFrame(frame, format.sourceWidth, frameBytes);
  if (tones.autoWhiteBalance >= 1 && tones.autoWhiteBalance <= 3) {
    filter_.ComputeGains(tones.autoWhiteBalance - 1, format.bayerMode, tones.gains);
    StoreGains(tones.gains);
  }
  if (format.whitePixelCanceling) {
    CancelWhitePixels(frame, frameBytes, format.fullWidth, layout_.height, tones.whitePixelThreshold,
                      format.bayerMode, tones.gains);
    filter_.PrepareFrame(frame, format.sourceWidth, frameBytes);
  }

  Demosaic(frame, rows, settings);
  if (tones.sharpness != 0 && blurBuffer_.Data()) {
    Sharpen(output_.Data(), layout_.width, layout_.height, layout_.outputStride,
            settings.sharpnessTable.data(), blurBuffer_.Data());
  }
}

void COrvaneImageImpl32::Demosaic(const std::uint8_t* frame, LONG rows, const FrameSettings& settings) {
  const FrameFormat& format = settings.format;
  const auto& [r, g, b] = settings.tones.gains;
  if (format.bayerDecodingMethod == 0) {
    filter_.SetGains(r, g, b);
    if (format.colorful) {
      filter_.DemosaicColor(filter_.WorkImage(), output_.Data(), layout_.width, format.bayerMode);
    } else {
      filter_.DemosaicMono(filter_.WorkImage(), output_.Data(), layout_.width, format.bayerMode);
    }
  } else if (format.colorful) {
    DemosaicDirectColor(0, 0, layout_.width, rows, frame, format.bayerMode, r, g, b);
  } else {
    DemosaicDirectMono(0, 0, layout_.width, rows, frame, format.bayerMode);
  }
}

void COrvaneImageImpl32::DemosaicDirectColor(LONG x, LONG y, LONG width, LONG height,
                                             const unsigned char* frame, LONG bayerMode, LONG gainR,
                                             LONG gainG, LONG gainB) {
  if (std::uint8_t* out = OutputAt(x, y, width, height); out && frame) {
    DirectDemosaic(frame, Get(format_.sourceWidth), width, height, PhaseOfMode(bayerMode),
                   {gainR, gainG, gainB}, 0, height, out, layout_.outputStride);
  }
}

void COrvaneImageImpl32::DemosaicDirectMono(LONG x, LONG y, LONG width, LONG height,
                                            const unsigned char* frame, LONG bayerMode) {
  if (std::uint8_t* out = OutputAt(x, y, width, height); out && frame) {
    DirectDemosaicGrey(frame, Get(format_.sourceWidth), width, height, PhaseOfMode(bayerMode), 0, height, out,
                       layout_.outputStride);
  }
}

std::uint8_t* COrvaneImageImpl32::OutputAt(LONG x, LONG y, LONG width, LONG height) const {
  const bool inside = layout_.pixelBytes == 4 && x >= 0 && y >= 0 && width >= 0 && height >= 0 &&
                      x <= layout_.width - width && y <= layout_.height - height;
  if (!inside) return nullptr;
  return output_.Data() + std::ptrdiff_t{y} * layout_.outputStride + std::ptrdiff_t{x} * 4;
}

void COrvaneImageImpl32::ConvertComplementary(unsigned char* frame) {
  DecodeComplementaryFrame(frame, 4);
}

DWORD COrvaneImageImpl32::GetMeanLuminance() {
  return MeanLuminance(4);
}

}  // namespace zel
