#include "tools/support/RawDescription.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <fstream>

#include "property/CZELDeviceProperty.h"
#include "tools/support/CameraReport.h"
#include "tools/support/PropertyNames.h"
#include "tools/support/ToolError.h"
#include "tools/support/Words.h"

namespace zel::tool {
namespace {

constexpr std::string_view kPhase = "bayer-mode";

/// Settings in records, and those with a range of their own: the others are registers, or say nothing about
/// a picture.
std::optional<LONG> StoredValue(CZELDeviceProperty& store, const PropertyName& property) {
  if (property.set == nullptr || property.get == nullptr) return std::nullopt;
  LONG value = 0;
  if (property.id != kNoRecord) {
    PropertyRecord record;
    if (store.GetPropertyInfo(property.id, &record) != S_OK) return std::nullopt;
    value = record.current;
  } else if (!property.HasOwnRange() || property.get(store, &value) != S_OK) {
    return std::nullopt;
  }
  return value;
}

/// The number of this name; an error for anything else and for more than 32 bits.
LONG Number(const Json& object, std::string_view name) {
  const Json& value = object.at(std::string(name));
  const auto number = ParseNumber(value.dump());
  if (!number) throw ToolError(kExitUsage, fmt::format("{} is {}", name, value.dump()));
  return *number;
}

std::optional<LONG> NumberIfAny(const Json& object, std::string_view name) {
  if (!object.contains(std::string(name))) return std::nullopt;
  return Number(object, name);
}

/// Automatic white balance may have left gains that can't be set.
bool MayExceedItsRange(const DevelopSetting& setting) {
  return std::string_view(setting.property).starts_with("color-gain");
}

RawDescription Parse(const Json& json) {
  RawDescription description;
  description.width = Number(json, "width");
  description.height = Number(json, "height");
  description.bits = Number(json, "bits");
  description.inputFormat = Number(json, "input_format");
  description.colorMatrix = json.at("color_matrix").get<std::vector<double>>();
  const bool isFrame =
      description.width > 0 && description.height > 0 && (description.bits == 8 || description.bits == 16) &&
      (description.inputFormat == 0 || description.inputFormat == 4 || description.inputFormat == 6) &&
      description.colorMatrix.size() == 16;
  if (!isFrame) throw ToolError(kExitUsage, "no such frame is known");

  const Json& settings = json.at("settings");
  for (const DevelopSetting& setting : DevelopSettings()) {
    std::optional<LONG>& value = description.settings.emplace_back(NumberIfAny(settings, setting.property));
    const auto [minimum, maximum] = LimitsOf(setting);
    if (value && !MayExceedItsRange(setting) && (*value < minimum || *value > maximum)) {
      throw ToolError(kExitUsage,
                      fmt::format("{} {} is not in {}..{}", setting.property, *value, minimum, maximum));
    }
    // One-byte samples were written when they had got their contrast.
    if (setting.property == std::string_view("contrast") && description.bits == 8) value.reset();
    if (setting.property == kPhase) value = Number(json, "bayer_mode");
  }
  description.outputFormat = NumberIfAny(settings, "output-format");
  // Raw samples are what the file holds already.
  if (description.outputFormat == 0) description.outputFormat.reset();
  const std::optional<LONG> whitePixel = NumberIfAny(settings, "white-pixel-canceling");
  if (whitePixel) description.whitePixel = *whitePixel != 0;
  // A camera type with a finer scale than on and off gives the threshold.
  if (whitePixel > 1) description.whiteThreshold = std::min<LONG>(*whitePixel, 255);
  return description;
}

}  // namespace

std::filesystem::path DescriptionOf(const std::filesystem::path& raw) {
  std::filesystem::path path = raw;
  path += ".json";
  return path;
}

Json DescribeCamera(Camera& camera) {
  Json json = CameraJson(camera.Id());
  CZELDeviceProperty& store = camera.Properties();
  json["color_matrix"] = Json::array();
  for (LONG n = 0; n < 16; ++n) {
    float element = 0;
    store.GetColorMatrixElement(n % 4, n / 4, &element);
    json["color_matrix"].push_back(std::round(element * 1e6) / 1e6);  // 1.36, and the same float again
  }
  Json settings = Json::object();
  for (const PropertyName& property : PropertyNames()) {
    if (property.name == kPhase) continue;  // that of the frame
    if (const auto value = StoredValue(store, property)) settings[std::string(property.name)] = *value;
  }
  json["settings"] = std::move(settings);
  return json;
}

void SaveFrame(const CapturedFrame& frame, FileFormat format, const std::filesystem::path& path,
               const Json& camera) {
  WritePicture(frame.View(), format, path);
  if (format != FileFormat::Raw) return;
  Json json;
  json["width"] = frame.width;
  json["height"] = frame.height;
  json["bits"] = frame.sampleBits;
  json["input_format"] = frame.inputFormat;
  json["bayer_mode"] = frame.bayerMode;
  json.update(camera);
  OutputFile file(DescriptionOf(path));
  std::ofstream out(file.TemporaryPath(), std::ios::binary);
  out << json.dump(2) << '\n';
  out.close();
  if (!out) throw ToolError(kExitFailed, fmt::format("'{}' can't be written", ToText(DescriptionOf(path))));
  file.Commit();
}

std::optional<RawDescription> ReadDescription(const std::filesystem::path& raw) {
  const std::filesystem::path path = DescriptionOf(raw);
  if (!std::filesystem::exists(path)) return std::nullopt;
  std::ifstream file(path, std::ios::binary);
  try {
    return Parse(Json::parse(file));
  } catch (const std::exception& error) {
    // The parser's messages begin with their number in brackets.
    const std::string_view words = error.what();
    const std::size_t bracket = words.starts_with('[') ? words.find("] ") : std::string_view::npos;
    throw ToolError(kExitUsage,
                    fmt::format("'{}' does not describe a raw frame: {}", ToText(path),
                                bracket == std::string_view::npos ? words : words.substr(bracket + 2)),
                    "without the file, --width and --height are enough");
  }
}

}  // namespace zel::tool
