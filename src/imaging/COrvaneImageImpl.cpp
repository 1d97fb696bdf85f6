#include "imaging/COrvaneImageImpl.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "imaging/ColorTemperature.h"
#include "imaging/kernels/Complementary.h"
#include "imaging/kernels/Luminance.h"
#include "imaging/kernels/Pixels.h"
#include "imaging/kernels/Samples.h"
#include "imaging/kernels/Yuv.h"

namespace zel {
namespace {

constexpr LONG kOutputRaw = 0;
constexpr LONG kOutput32Grey = 1;  // 32-bit pixels; monochrome samples are expanded as they are
constexpr LONG kOutput24 = 4;
constexpr LONG kOutput32 = 5;

constexpr LONG kInputSamples = 0;
constexpr LONG kInputPacked = 4;
constexpr LONG kInputYuv = 6;

constexpr LONG kPixelsPerMetre = 3780;      // 96 per inch
constexpr std::size_t kWorkPlaneBytes = 8;  // per pixel

bool IsKnownOutput(LONG format) {
  return format == kOutputRaw || format == kOutput32Grey || format == kOutput24 || format == kOutput32;
}

/// Bytes of one output pixel; 0 for raw samples.
LONG PixelBytes(LONG outputFormat) {
  if (outputFormat == kOutputRaw) return 0;
  return outputFormat == kOutput24 ? 3 : 4;
}

std::int64_t RawStride(const FrameShape& format) {
  switch (format.inputFormat) {
    case kInputSamples:
      return std::int64_t{format.width} * (format.eightBitTransfer ? 1 : 2);
    // Smaller than a row of pixels: the padding rule for bits, applied to bytes, as callers know it.
    case kInputPacked:
      return (3 * std::int64_t{format.width} + 31) / 32 * 4;
    case kInputYuv:
      return 2 * std::int64_t{format.width};
    default:
      return 0;
  }
}

std::array<std::uint8_t, 256> MakeContrastTable(std::int64_t contrast) {
  std::array<std::uint8_t, 256> table{};
  if (contrast >= 128) return table;
  for (std::int64_t i = 0; i < 256; ++i) {
    std::int64_t value = 0;
    if (i > 255 - contrast) {
      value = 255;
    } else if (i >= contrast) {
      const std::int64_t divisor = 256 - 2 * contrast;
      value = (2 * (i - contrast) * 256 + divisor) / (2 * divisor);
    }
    table[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(value);
  }
  return table;
}

}  // namespace

COrvaneImageImpl::COrvaneImageImpl(DWORD createFilter)
    : createFilter_(createFilter != 0), contrastTable_(MakeContrastTable(0)) {}

bool COrvaneImageImpl::SetOutputFormat(LONG format) {
  if (!IsKnownOutput(format)) return false;
  Set(format_.outputFormat, format);
  return true;
}

bool COrvaneImageImpl::SetInputFormat(LONG format) {
  Set(format_.inputFormat, format);
  return true;
}

void COrvaneImageImpl::SetSourceHeight(LONG height) {
  const CritSecGuard guard(*lock_);
  format_.sourceHeight = format_.fullHeight = height;
}

void COrvaneImageImpl::SetSourceWidth(LONG width) {
  const CritSecGuard guard(*lock_);
  format_.sourceWidth = format_.fullWidth = width;
}

void COrvaneImageImpl::SetGamma(LONG gamma) {
  const CritSecGuard guard(*lock_);
  filter_.SetGammaTable(gamma);
  tones_.gamma = gamma;
}

void COrvaneImageImpl::SetContrast(LONG contrast) {
  const CritSecGuard guard(*lock_);
  contrastTable_ = MakeContrastTable(contrast);
  tones_.contrast = contrast;
}

void COrvaneImageImpl::SetBrightness(LONG brightness) {
  const CritSecGuard guard(*lock_);
  tones_.brightness = brightness;
  filter_.Matrix().SetBrightness(brightness);
}

void COrvaneImageImpl::SetSaturation(LONG saturation) {
  const CritSecGuard guard(*lock_);
  tones_.saturation = saturation;
  filter_.Matrix().SetSaturation(saturation);
}

void COrvaneImageImpl::SetHue(LONG degrees) {
  const CritSecGuard guard(*lock_);
  tones_.hue = degrees;
  filter_.Matrix().SetHue(degrees);
}

void COrvaneImageImpl::SetColorCorrection(LONG on) {
  const CritSecGuard guard(*lock_);
  filter_.Matrix().SetCorrection(on != 0);
}

void COrvaneImageImpl::SetColorMatrixElement(LONG row, LONG column, float value) {
  const CritSecGuard guard(*lock_);
  filter_.Matrix().SetUserElement(row, column, value);
}

float COrvaneImageImpl::GetColorMatrixElement(LONG row, LONG column) const {
  const CritSecGuard guard(*lock_);
  return filter_.Matrix().UserElement(row, column);
}

void COrvaneImageImpl::SetSharpness(LONG sharpness) {
  const CritSecGuard guard(*lock_);
  tones_.sharpness = std::clamp<LONG>(sharpness, 0, 256);
}

void COrvaneImageImpl::SetWhitePixelCanceling(unsigned char enable, unsigned char threshold) {
  const CritSecGuard guard(*lock_);
  format_.whitePixelCanceling = enable != 0;
  tones_.whitePixelThreshold = threshold;
}

void COrvaneImageImpl::GetWhitePixelCanceling(unsigned char* enable, unsigned char* threshold) const {
  const CritSecGuard guard(*lock_);
  if (enable) *enable = format_.whitePixelCanceling ? 1 : 0;
  if (threshold) *threshold = tones_.whitePixelThreshold;
}

bool COrvaneImageImpl::GainsFromTemperature(LONG kelvin, LONG* r, LONG* g, LONG* b) const {
  return zel::GainsFromTemperature(kelvin, r, g, b);
}

void COrvaneImageImpl::WhitePointFromTemperature(double kelvin, double* r, double* g, double* b) const {
  zel::WhitePointFromTemperature(kelvin, r, g, b);
}

bool COrvaneImageImpl::SaveToFile(const OLECHAR*) {
  return false;
}

void COrvaneImageImpl::FreeBuffers() {
  for (ScratchBuffer* buffer : {&output_, &rawCopy_, &rowBuffer_}) buffer->Free();
  for (ScratchBuffer& plane : workPlanes_) plane.Free();
  rawSize_ = 0;
  header_ = {};
}

void COrvaneImageImpl::AllocateBuffers() {
  FreeBuffers();
  layout_ = {};
  if (!Allocate()) {
    FreeBuffers();
    layout_ = {};
    return;
  }
  ready_ = true;
}

bool COrvaneImageImpl::Allocate() {
  const FrameShape format = Get<FrameShape>(format_);
  if (format.width < 1 || format.height < 1) return false;
  const LONG pixelBytes = PixelBytes(format.outputFormat);
  const std::int64_t pixels = std::int64_t{format.width} * format.height;
  const std::int64_t outputStride = std::int64_t{format.width} * (pixelBytes != 0           ? pixelBytes
                                                                  : format.eightBitTransfer ? 1
                                                                                            : 2);
  const std::int64_t rawStride = RawStride(format);
  // The header and `GetRawSize` state sizes in 32 bits.
  constexpr std::int64_t kMaxBytes = std::numeric_limits<DWORD>::max();
  if (std::max(outputStride, rawStride) > std::numeric_limits<LONG>::max()) return false;
  if (std::max(outputStride, rawStride) * format.height > kMaxBytes) return false;

  const auto outputBytes = static_cast<std::size_t>(outputStride * format.height);
  const auto rawBytes = static_cast<std::size_t>(rawStride * format.height);
  // 32-bit pictures have a spare row below them.
  const std::size_t spareBytes = pixelBytes == 4 ? static_cast<std::size_t>(outputStride) : 0;
  if (!output_.Reserve(outputBytes + spareBytes)) return false;
  if (pixelBytes != 0) std::memset(output_.Data(), 255, outputBytes);
  if (format.keepRaw && rawBytes != 0 && !rawCopy_.Reserve(rawBytes)) return false;
  if (format.inputFormat == kInputYuv) {
    for (ScratchBuffer& plane : workPlanes_) {
      if (!plane.Reserve(static_cast<std::size_t>(pixels) * kWorkPlaneBytes)) return false;
    }
  }
  if (createFilter_ && pixelBytes != 0 && !filter_.Allocate(format.width, format.height)) return false;
  if (createFilter_ && pixelBytes == 4 && format.sourceWidth > 0) {
    if (!rowBuffer_.Reserve(std::size_t(format.sourceWidth) * 2)) return false;
  }

  rawSize_ = static_cast<DWORD>(rawBytes);
  layout_ = {format, pixelBytes, static_cast<LONG>(outputStride), static_cast<LONG>(rawStride)};
  header_.biSize = sizeof(header_);
  header_.biWidth = format.width;
  header_.biHeight = format.height;
  header_.biPlanes = 1;
  header_.biBitCount = 32;
  header_.biSizeImage = static_cast<DWORD>(pixelBytes != 0 ? outputBytes : static_cast<std::size_t>(pixels));
  header_.biXPelsPerMeter = kPixelsPerMetre;
  header_.biYPelsPerMeter = kPixelsPerMetre;
  return true;
}

void COrvaneImageImpl::CopyTo(COrvaneImage* destination) {
  auto* copy = dynamic_cast<COrvaneImageImpl*>(destination);
  if (!copy || copy == this) return;
  if (!copy->output_.Data() || copy->layout_ != layout_) {
    copy->Set(copy->format_, Settings().format);
    copy->AllocateBuffers();
  }
  if (!output_.Data() || !copy->output_.Data() || copy->layout_ != layout_) return;
  if (rawCopy_.Data() && copy->rawCopy_.Data()) {
    std::memcpy(copy->rawCopy_.Data(), rawCopy_.Data(), rawSize_);
  }
  std::memcpy(copy->output_.Data(), output_.Data(),
              std::size_t(layout_.outputStride) * std::size_t(layout_.height));
}

FrameSettings COrvaneImageImpl::Settings() const {
  const CritSecGuard guard(*lock_);
  FrameSettings settings{format_, tones_, contrastTable_};
  static_cast<FrameShape&>(settings.format) = Shape();
  return settings;
}

FrameSettings COrvaneImageImpl::BeginConversion() {
  const CritSecGuard guard(*lock_);
  filter_.BeginFrame(tones_.gamma);
  return Settings();
}

LONG COrvaneImageImpl::RowsInside(std::size_t frameBytes, std::size_t pitch, std::size_t rowBytes,
                                  LONG rows) {
  if (frameBytes < rowBytes || pitch == 0) return 0;
  return static_cast<LONG>(std::min((frameBytes - rowBytes) / pitch + 1, static_cast<std::size_t>(rows)));
}

void COrvaneImageImpl::ApplyContrast(std::uint8_t* samples, const FrameSettings& settings, LONG firstRow,
                                     LONG endRow) const {
  const LONG rows = std::min(endRow, settings.format.sourceHeight) - firstRow;
  const auto width = std::size_t(settings.format.sourceWidth);
  if (rows > 0)
    ApplyTable(samples + std::size_t(firstRow) * width, std::size_t(rows) * width,
               settings.contrastTable.data());
}

bool COrvaneImageImpl::CopyRows(const Source& source, std::size_t rowBytes, std::uint8_t* out,
                                std::size_t outStride) const {
  const LONG rows = RowsInside(source.bytes, source.pitch, rowBytes, layout_.height);
  for (std::size_t row = 0; row < static_cast<std::size_t>(rows); ++row) {
    std::memcpy(out + row * outStride, source.data + row * source.pitch, rowBytes);
  }
  return rows == layout_.height;
}

void COrvaneImageImpl::KeepRaw(const Source& source, std::size_t rowBytes) {
  const auto stride = static_cast<std::size_t>(layout_.rawStride);
  if (rawCopy_.Data()) CopyRows(source, std::min(rowBytes, stride), rawCopy_.Data(), stride);
}

bool COrvaneImageImpl::ProcessFrame(unsigned char* frame) {
  if (!frame || !output_.Data()) return false;
  const FrameSettings settings = Settings();
  if (settings.SourceSamples() == 0) return false;
  switch (settings.format.inputFormat) {
    case kInputSamples:
      return ProcessSamples(frame, settings);
    case kInputPacked:
      return ProcessPacked(frame, settings);
    case kInputYuv:
      return ProcessYuv(frame, settings);
    default:
      return false;
  }
}

bool COrvaneImageImpl::ProcessSamples(std::uint8_t* frame, const FrameSettings& settings) {
  const FrameFormat& format = settings.format;
  const auto sourceWidth = static_cast<std::size_t>(format.sourceWidth);
  const Source source{frame, settings.SourceSamples() * settings.SampleBytes(),
                      sourceWidth * settings.SampleBytes()};
  // Two-byte samples get their contrast when they have been packed.
  if (settings.tones.contrast != 0 && format.eightBitTransfer) {
    ApplyContrast(frame, settings, 0, layout_.height);
  }
  if (format.keepRaw) KeepRaw(source, static_cast<std::size_t>(layout_.rawStride));

  const auto stride = static_cast<std::size_t>(layout_.outputStride);
  if (format.outputFormat == kOutputRaw) return CopyRows(source, stride, output_.Data(), stride);
  if (!format.colorful && format.outputFormat == kOutput32Grey) {
    const std::size_t pixels = static_cast<std::size_t>(layout_.width) / 4 * 4;
    const LONG rows = RowsInside(source.bytes, sourceWidth, pixels, layout_.height);
    for (std::size_t row = 0; row < static_cast<std::size_t>(rows); ++row) {
      ExpandGrey(frame + row * sourceWidth, pixels, 0, output_.Data() + row * stride);
    }
    return pixels != 0 && rows == layout_.height;
  }
  return ConvertRaw(frame);
}

bool COrvaneImageImpl::ProcessPacked(const std::uint8_t* frame, const FrameSettings& settings) {
  const auto rowBytes = 3 * static_cast<std::size_t>(layout_.width);
  const auto stride = static_cast<std::size_t>(layout_.outputStride);
  const Source source{frame, settings.SourceSamples() * settings.SampleBytes(),
                      static_cast<std::size_t>(settings.format.sourceWidth)};
  if (settings.format.keepRaw) KeepRaw(source, rowBytes);
  if (settings.format.outputFormat == kOutput24) return CopyRows(source, rowBytes, output_.Data(), stride);
  if (settings.format.outputFormat != kOutput32) return false;
  const LONG rows = RowsInside(source.bytes, source.pitch, rowBytes, layout_.height);
  for (std::size_t row = 0; row < static_cast<std::size_t>(rows); ++row) {
    ExpandPacked(frame + row * source.pitch, static_cast<std::size_t>(layout_.width),
                 output_.Data() + row * stride);
  }
  return rows == layout_.height;
}

bool COrvaneImageImpl::ProcessYuv(const std::uint8_t* frame, const FrameSettings& settings) {
  // Groups follow one another without row gaps.
  const auto rowBytes = static_cast<std::size_t>(layout_.rawStride);
  const Source source{frame, settings.SourceSamples() * 2, rowBytes};
  if (settings.format.keepRaw) KeepRaw(source, rowBytes);
  if (layout_.pixelBytes != 4) return false;

  const auto width = static_cast<std::size_t>(layout_.width);
  const auto height = static_cast<std::size_t>(layout_.height);
  if (settings.format.colorful) {
    YuvToPixels(frame, std::min(width * height / 2, source.bytes / 4), output_.Data());
    return width * height % 2 == 0 && width * height / 2 <= source.bytes / 4;
  }
  bool whole = true;
  for (std::size_t row = 0; row < height; ++row) {
    // Odd output rows begin in the next input row, at the second tap; even ones at a row's start.
    const std::int64_t start = static_cast<std::int64_t>((row + 1) / 2) * settings.format.sourceWidth +
                               (row % 2 != 0 ? settings.format.twoTap : 0);
    if (start < 0 || static_cast<std::size_t>(start) + width > source.bytes) {
      whole = false;
      continue;
    }
    ExpandGrey(frame + start, width, 255,
               output_.Data() + row * static_cast<std::size_t>(layout_.outputStride));
  }
  return whole;
}

bool COrvaneImageImpl::DecodeComplementaryFrame(const std::uint8_t* frame, LONG pixelBytes) {
  if (!frame || !output_.Data() || layout_.pixelBytes != pixelBytes) return false;
  const FrameSettings settings = Settings();
  DecodeComplementary(frame, settings.SourceSamples() * settings.SampleBytes(),
                      static_cast<std::size_t>(settings.format.sourceWidth), layout_.width, 0,
                      layout_.height - 1, pixelBytes, output_.Data(), layout_.outputStride);
  return settings.format.sourceHeight >= layout_.height;
}

DWORD COrvaneImageImpl::MeanLuminance(LONG pixelBytes) const {
  if (!output_.Data() || layout_.pixelBytes != pixelBytes) return 0;
  // Rows have no gaps, so that the picture is one run of pixels.
  const std::size_t pixels = std::size_t(layout_.width) * std::size_t(layout_.height);
  return static_cast<DWORD>(SumLuminance(output_.Data(), pixels, pixelBytes) / pixels);
}

}  // namespace zel
