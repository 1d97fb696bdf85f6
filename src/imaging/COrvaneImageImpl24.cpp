#include "imaging/COrvaneImageImpl24.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "imaging/ImageFile.h"
#include "imaging/kernels/Samples.h"

namespace zel {
namespace {

// Red and blue gains are kept finer than the green one by this factor; what is unity stays unity.
constexpr double kGainScale = 1.28;
constexpr std::int32_t kScaledUnit = 25;  // 1/4096 per scaled gain step: 128 * 1.28 * 25 = 4096
constexpr std::int32_t kGreenUnit = 32;   // 128 * 32 = 4096
constexpr LONG kMaxGain = 1 << 14;

LONG ScaledGain(LONG gain) {
  return static_cast<LONG>(std::floor(std::clamp<LONG>(gain, 0, kMaxGain) * kGainScale + 0.5));
}

PlaneGains Scale(const ColorGains& gains) {
  return {ScaledGain(gains.r) * kScaledUnit, std::clamp<LONG>(gains.g, 0, kMaxGain) * kGreenUnit,
          ScaledGain(gains.b) * kScaledUnit};
}

}  // namespace

bool COrvaneImageImpl24::SaveToFile(const OLECHAR* path) {
  if (!path || !IsReady() || layout_.pixelBytes != 3) return false;
  const auto outputBytes = std::size_t(layout_.outputStride) * std::size_t(layout_.height);
  const std::uint8_t* raw = GetRawBuffer();
  const std::span<const std::uint8_t> samples(raw, raw == output_.Data() ? outputBytes : GetRawSize());
  return SaveRawOrBitmap(path, samples, output_.Data(), layout_.width, layout_.height);
}

bool COrvaneImageImpl24::ConvertRaw(unsigned char* frame) {
  if (!frame || layout_.pixelBytes != 3 || !filter_.WorkImage()) return false;
  const FrameSettings settings = BeginConversion();
  const FrameFormat& format = settings.format;
  const std::size_t samples = settings.SourceSamples();
  if (samples == 0) return false;

  ColorGains gains = settings.tones.gains;
  if (settings.tones.autoWhiteBalance == 1 || settings.tones.autoWhiteBalance == 2) {
    // Taken from the frame as it came, two-byte samples not yet packed.
    LONG r = gains.r, g = gains.g, b = gains.b;
    if (format.eightBitTransfer) {
      GreyWorldGains24(frame, format.sourceWidth, std::min(layout_.height, format.sourceHeight),
                       format.bayerMode, &r, &g, &b);
    } else {
      const LONG rows = RowsInside(samples, std::size_t(format.sourceWidth),
                                   static_cast<std::size_t>(layout_.width), layout_.height);
      WhitePointGains24(frame, format.sourceWidth, layout_.width, rows, format.bayerMode, &r, &g, &b);
    }
    gains = {r, g, b};
    StoreGains(gains);
  }
  if (!format.eightBitTransfer) {
    // Counted by the picture, not by the source rows.
    PackLowByte(frame, std::min(samples, std::size_t(layout_.width) * std::size_t(layout_.height)), frame);
    if (settings.tones.contrast != 0) ApplyContrast(frame, settings, 0, layout_.height);
  }
  filter_.PrepareFrame(frame, format.sourceWidth, samples);
  if (format.colorful) {
    filter_.DemosaicColor24(filter_.WorkImage(), output_.Data(), layout_.width, format.bayerMode,
                            Scale(gains));
  } else {
    filter_.DemosaicMono24(filter_.WorkImage(), output_.Data(), layout_.width, format.bayerMode);
  }
  return RowsInside(samples, std::size_t(format.sourceWidth), std::size_t(layout_.width), layout_.height) ==
         layout_.height;
}

bool COrvaneImageImpl24::ConvertComplementary(unsigned char* frame) {
  return DecodeComplementaryFrame(frame, 3);
}

DWORD COrvaneImageImpl24::GetMeanLuminance() {
  return MeanLuminance(3);
}

}  // namespace zel
