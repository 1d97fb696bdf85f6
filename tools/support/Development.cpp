#include "tools/support/Development.h"

#include <fmt/format.h>

#include <limits>

#include "imaging/COrvaneImageImpl24.h"
#include "imaging/COrvaneImageImpl32.h"
#include "tools/support/ToolError.h"

namespace zel::tool {
namespace {

constexpr LONG kPacked = 4, kYuv = 6;
constexpr LONG kOutput24 = 4, kOutput32 = 5;
constexpr LONG kLeast = std::numeric_limits<LONG>::min(), kMost = std::numeric_limits<LONG>::max();
// What a starting camera uses; the image object's own 0 would switch the filter off.
constexpr LONG kDotThreshold = 15;

using Image = COrvaneImageImpl;

constexpr DevelopSetting kSettings[] = {
    {"--gain-r", "Gain of red, 128 is unity", kLeast, kMost, false,
     [](Image& i, LONG v) { i.SetColorGainR(v); }},
    {"--gain-g", "Gain of green", kLeast, kMost, false, [](Image& i, LONG v) { i.SetColorGainG(v); }},
    {"--gain-b", "Gain of blue", kLeast, kMost, false, [](Image& i, LONG v) { i.SetColorGainB(v); }},
    {"--awb", "Automatic white balance, 0 off", 0, 3, false,
     [](Image& i, LONG v) { i.SetAutoWhiteBalance(v); }},
    {"--saturation", "-10..10, 0 neutral", kLeast, kMost, false,
     [](Image& i, LONG v) { i.SetSaturation(v); }},
    {"--contrast", "-127..127, 0 neutral", kLeast, kMost, false, [](Image& i, LONG v) { i.SetContrast(v); }},
    {"--brightness", "-255..255, 0 neutral", kLeast, kMost, false,
     [](Image& i, LONG v) { i.SetBrightness(v); }},
    {"--hue", "Degrees", kLeast, kMost, false, [](Image& i, LONG v) { i.SetHue(v); }},
    {"--method", "Demosaicing: 0 best, else plain", kLeast, kMost, false,
     [](Image& i, LONG v) { i.SetBayerDecodingMethod(v); }},
    {"--bayer-mode", "Colour of the first pixel", 0, 3, false, [](Image& i, LONG v) { i.SetBayerMode(v); }},
    {"--colorful", "1 colour, 0 grey", 0, 1, true,
     [](Image& i, LONG v) { i.SetColorful(static_cast<unsigned char>(v)); }},
    {"--gamma", "Exponent in hundredths, 0 off", kLeast, kMost, false,
     [](Image& i, LONG v) { i.SetGamma(v); }},
    {"--color-correction", "Colour matrix, 0 or 1", 0, 1, true,
     [](Image& i, LONG v) { i.SetColorCorrection(v); }},
    {"--two-tap", "Rows were read out from both ends", 0, kMost, true,
     [](Image& i, LONG v) { i.SetTwoTap(v); }},
    {"--dot-threshold", "Least deviation of a defect pixel", 0, kMost, false,
     [](Image& i, LONG v) { i.SetDotFilterThreshold(v); }},
    {"--dot-enabled", "Removes single deviating pixels", 0, 1, true,
     [](Image& i, LONG v) { i.SetDotFilterEnabled(v); }},
    {"--sharpness", "0..256, 0 off", kLeast, kMost, false, [](Image& i, LONG v) { i.SetSharpness(v); }},
};

void ApplySettings(Image& image, const DevelopRequest& request) {
  for (std::size_t n = 0; n < request.colorMatrix.size(); ++n) {
    image.SetColorMatrixElement(static_cast<LONG>(n / 4), static_cast<LONG>(n % 4),
                                static_cast<float>(request.colorMatrix[n]));
  }
  // Who gives a matrix wants it used, unless he says otherwise below.
  if (!request.colorMatrix.empty()) image.SetColorCorrection(1);
  image.SetDotFilterThreshold(kDotThreshold);
  for (std::size_t n = 0; n < request.settings.size(); ++n) {
    if (const auto& value = request.settings[n]) kSettings[n].apply(image, *value);
  }
  unsigned char enable = 0, threshold = 0;
  image.GetWhitePixelCanceling(&enable, &threshold);
  image.SetWhitePixelCanceling(static_cast<unsigned char>(request.whitePixel.value_or(enable)),
                               static_cast<unsigned char>(request.whiteThreshold.value_or(threshold)));
}

}  // namespace

std::span<const DevelopSetting> DevelopSettings() {
  return kSettings;
}

std::string DevelopRequest::FrameText() const {
  const char* kind = bits == 16 ? "16-bit mosaic" : "8-bit mosaic";
  if (inputFormat == kPacked) kind = "packed colour";
  if (inputFormat == kYuv) kind = "YUV 4:2:2";
  return fmt::format("{} x {} {}", SourceWidth(), SourceHeight(), kind);
}

std::uint64_t DevelopRequest::FrameBytes() const {
  const auto pixels = static_cast<std::uint64_t>(SourceWidth()) * static_cast<std::uint64_t>(SourceHeight());
  if (inputFormat == kPacked) return pixels * 3;
  if (inputFormat == kYuv) return pixels * 2;
  return pixels * static_cast<std::uint64_t>(bits / 8);
}

std::unique_ptr<COrvaneImageImpl> Develop(const DevelopRequest& request, std::vector<std::uint8_t>& frame) {
  if (request.bits == 16 && request.inputFormat != 0) {
    throw ToolError(kExitUsage, "only mosaic frames have 16-bit samples");
  }
  const bool wants24 = request.imageClass ? *request.imageClass == 24 : request.outputFormat == kOutput24;
  std::unique_ptr<COrvaneImageImpl> image;
  if (wants24) {
    image = std::make_unique<COrvaneImageImpl24>(1);
  } else {
    image = std::make_unique<COrvaneImageImpl32>(1);
  }
  const LONG outputFormat = request.outputFormat.value_or(wants24 ? kOutput24 : kOutput32);
  if (!image->SetOutputFormat(outputFormat)) {
    throw ToolError(kExitUsage, fmt::format("output format {} is none of 0, 1, 4 and 5", outputFormat));
  }
  image->SetInputFormat(request.inputFormat);
  image->SetWidth(request.width);
  image->SetHeight(request.height);
  // The image object counts the row pitch of packed colour in bytes.
  image->SetSourceWidth(request.SourceWidth() * (request.inputFormat == kPacked ? 3 : 1));
  image->SetSourceHeight(request.SourceHeight());
  image->Set8BitTransfer(request.bits == 8);
  ApplySettings(*image, request);
  image->AllocateBuffers();
  if (image->GetBuffer() == nullptr) {
    throw ToolError(kExitUsage,
                    fmt::format("a picture of {} x {} is too large", request.width, request.height));
  }
  if (request.complementary) {
    image->ConvertComplementary(frame.data());
  } else {
    image->ProcessFrame(frame.data());
  }
  return image;
}

}  // namespace zel::tool
