#include "tools/support/Development.h"

#include <fmt/format.h>

#include "imaging/COrvaneImageImpl24.h"
#include "imaging/COrvaneImageImpl32.h"
#include "property/CZELDevicePropertyImpl.h"
#include "tools/support/PropertyNames.h"
#include "tools/support/ToolError.h"

namespace zel::tool {
namespace {

constexpr LONG kPacked = 4, kYuv = 6;
constexpr LONG kOutput24 = 4, kOutput32 = 5;
// What a starting camera uses; the image object's own 0 would switch the filter off.
constexpr LONG kDotThreshold = 15;
constexpr SettingLimits kTwoTap{0, 65535};  // a switch, and of YUV frames an offset in a row

using Image = COrvaneImageImpl;

constexpr DevelopSetting kSettings[] = {
    {"--gain-r", "color-gain-red", false, [](Image& i, LONG v) { i.SetColorGainR(v); }},
    {"--gain-g", "color-gain-green", false, [](Image& i, LONG v) { i.SetColorGainG(v); }},
    {"--gain-b", "color-gain-blue", false, [](Image& i, LONG v) { i.SetColorGainB(v); }},
    {"--awb", "auto-white-balance", false, [](Image& i, LONG v) { i.SetAutoWhiteBalance(v); }},
    {"--saturation", "saturation", false, [](Image& i, LONG v) { i.SetSaturation(v); }},
    {"--contrast", "contrast", false, [](Image& i, LONG v) { i.SetContrast(v); }},
    {"--brightness", "brightness", false, [](Image& i, LONG v) { i.SetBrightness(v); }},
    {"--hue", "hue", false, [](Image& i, LONG v) { i.SetHue(v); }},
    {"--method", "bayer-decoding-method", false, [](Image& i, LONG v) { i.SetBayerDecodingMethod(v); }},
    {"--bayer-mode", "bayer-mode", false, [](Image& i, LONG v) { i.SetBayerMode(v); }},
    {"--colorful", "colorful", true, [](Image& i, LONG v) { i.SetColorful(static_cast<unsigned char>(v)); }},
    {"--gamma", "gamma", false, [](Image& i, LONG v) { i.SetGamma(v); }},
    {"--color-correction", "color-correction", true, [](Image& i, LONG v) { i.SetColorCorrection(v); }},
    {"--two-tap", "", true, [](Image& i, LONG v) { i.SetTwoTap(v); }},
    {"--dot-threshold", "dot-filter-threshold", false, [](Image& i, LONG v) { i.SetDotFilterThreshold(v); }},
    {"--dot-enabled", "dot-filter-enabled", true, [](Image& i, LONG v) { i.SetDotFilterEnabled(v); }},
    {"--sharpness", "sharpness", false, [](Image& i, LONG v) { i.SetSharpness(v); }},
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

/// The image object that the request asks for, without buffers.
std::unique_ptr<Image> MakeImage(const DevelopRequest& request) {
  const bool wants24 = request.imageClass ? *request.imageClass == 24 : request.outputFormat == kOutput24;
  std::unique_ptr<Image> image;
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
  return image;
}

bool Convert(Image& image, const DevelopRequest& request, std::vector<std::uint8_t>& frame) {
  return request.complementary ? image.ConvertComplementary(frame.data()) : image.ProcessFrame(frame.data());
}

/// The output formats that do come out of such a frame, found by trying.
std::string PossibleOutputs(DevelopRequest request) {
  std::string formats;
  request.width = request.height = 8;
  request.sourceWidth = request.sourceHeight = std::nullopt;
  request.imageClass = std::nullopt;
  for (const LONG format : {0, 1, 4, 5}) {
    request.outputFormat = format;
    const auto image = MakeImage(request);
    image->AllocateBuffers();
    std::vector<std::uint8_t> frame(request.FrameBytes());
    if (Convert(*image, request, frame)) formats += fmt::format("{}{}", formats.empty() ? "" : ", ", format);
  }
  return formats;
}

}  // namespace

std::span<const DevelopSetting> DevelopSettings() {
  return kSettings;
}

SettingLimits LimitsOf(const DevelopSetting& setting) {
  if (*setting.property == 0) return kTwoTap;
  const PropertyName& property = FindProperty(setting.property);
  if (property.id == kNoRecord) return {property.minimum, property.maximum};
  static const CZELDevicePropertyImpl kAnyCamera;
  const PropertyRecord& record = kAnyCamera.Record(property.id);
  return {record.minimum, record.maximum};
}

std::string TextOf(const DevelopSetting& setting) {
  if (*setting.property == 0) return "rows were read out from both ends";
  return fmt::format("{}: {}", setting.property, FindProperty(setting.property).text);
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
  if (request.bits == 16 && (request.inputFormat != 0 || request.complementary)) {
    throw ToolError(kExitUsage, request.complementary ? "a mosaic of complementary colours has 8-bit samples"
                                                      : "only mosaic frames have 16-bit samples");
  }
  if (request.width > request.SourceWidth() || request.height > request.SourceHeight()) {
    throw ToolError(kExitUsage, fmt::format("a picture of {} x {} is larger than its frame, {}",
                                            request.width, request.height, request.FrameText()));
  }
  auto image = MakeImage(request);
  image->AllocateBuffers();
  if (image->GetBuffer() == nullptr) {
    throw ToolError(kExitUsage,
                    fmt::format("a picture of {} x {} is too large", request.width, request.height));
  }
  if (!Convert(*image, request, frame)) {
    throw ToolError(
        kExitUsage,
        fmt::format("{} {} does not become output format {}{}", request.FrameText(),
                    request.complementary ? "of complementary colours" : "frame", image->GetOutputFormat(),
                    request.imageClass ? fmt::format(" in the {}-bit class", *request.imageClass) : ""),
        fmt::format("--output-format can be {}; --method 1 and 2 need 5 x 5 pixels",
                    PossibleOutputs(request)));
  }
  return image;
}

}  // namespace zel::tool
