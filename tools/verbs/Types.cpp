#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "device/CZELDevice.h"
#include "models/Factory.h"
#include "models/ModelTable.h"
#include "property/CZELDeviceProperty.h"
#include "tools/Verb.h"
#include "tools/support/Output.h"
#include "tools/support/PropertyNames.h"

namespace zel::tool {
namespace {

Json RangeJson(const std::optional<SettingRange>& range) {
  if (!range) return nullptr;
  return {{"min", range->minimum},
          {"max", range->maximum},
          {"default", range->hasDefault ? Json(range->defaultValue) : Json(nullptr)},
          {"supported", range->supported}};
}

Json RowJson(const ModelRow& row) {
  Json json;
  json["type"] = row.type;
  json["class"] = fmt::format("CZELModel{:02}", row.type);
  json["name"] = DisplayName(row.type);
  json["family"] = FamilyName(row.family);
  json["width"] = row.full.width;
  json["height"] = row.full.height;
  json["min_width"] = row.smallest ? Json(row.smallest->width) : Json(nullptr);
  json["min_height"] = row.smallest ? Json(row.smallest->height) : Json(nullptr);
  json["gain"] = RangeJson(row.gain);
  json["shutter"] = RangeJson(row.shutter);
  json["subsampling"] = JsonOrNull(row.subSampling);
  return json;
}

std::string SizeText(const SensorSize& size) {
  return fmt::format("{}x{}", size.width, size.height);
}

std::string RangeText(const std::optional<SettingRange>& range) {
  if (!range) return "-";
  if (!range->supported) return "unsupported";
  const std::string values = fmt::format("{}..{}", range->minimum, range->maximum);
  return range->hasDefault ? fmt::format("{} ({})", values, range->defaultValue) : values;
}

using Rows = std::vector<std::vector<std::string>>;

Rows TypeRows() {
  Rows rows{
      {"type", "name", "family", "size", "smallest", "gain (default)", "shutter (default)", "sub-sampling"}};
  for (const ModelRow& row : AllModels()) {
    rows.push_back({std::to_string(row.type), DisplayName(row.type), FamilyName(row.family),
                    SizeText(row.full), row.smallest ? SizeText(*row.smallest) : "-", RangeText(row.gain),
                    RangeText(row.shutter), TextOrDash(row.subSampling)});
  }
  return rows;
}

/// What only some types offer, by the names of the properties.
std::string OfferedSettings(LONG type) {
  static constexpr LONG kOptional[] = {kHorMirror, kVerMirror,  kExtTrigger, kHalfClock,
                                       kStrobe,    kAutoThresh, kNightMode,  kFocusPosition};
  const std::unique_ptr<CZELDevice> camera(CreateDeviceForType(static_cast<std::uint32_t>(type)));
  std::string offered;
  for (const PropertyName& property : PropertyNames()) {
    if (camera == nullptr || std::ranges::find(kOptional, property.id) == std::end(kOptional)) continue;
    if (camera->GetProperty()->IsPropertySupported(property.id) != S_OK) continue;
    offered += fmt::format("{}{}", offered.empty() ? "" : ", ", property.name);
  }
  return offered.empty() ? "-" : offered;
}

void PrintMarkdown() {
  Rows rows = TypeRows();
  rows.front().push_back("settings");
  for (const ModelRow& row : AllModels())
    rows[static_cast<std::size_t>(row.type) + 1].push_back(OfferedSettings(row.type));
  rows.insert(rows.begin() + 1, std::vector<std::string>(rows.front().size(), "---"));

  PrintLine("# Camera types");
  PrintLine("");
  PrintLine("Sizes in pixels; gain and shutter in the sensor's own units, for the shutter mostly lines. The");
  PrintLine(
      "sub-sampling is the highest code: code k divides the picture's sides by 2 to the power k. \"-\" "
      "stands");
  PrintLine(
      "for what a type leaves as its family has it, or does not offer. Written by `zelcam types "
      "--markdown`.");
  PrintLine("");
  for (const auto& row : rows) PrintLine(fmt::format("| {} |", fmt::join(row, " | ")));
}

}  // namespace

Action DefineTypes(CLI::App& command, const Globals& globals) {
  auto markdown = std::make_shared<bool>(false);
  command.add_flag("--markdown", *markdown, "As a page of documentation, with the settings of each type");
  return [markdown, &globals] {
    if (*markdown) {
      PrintMarkdown();
    } else if (globals.json) {
      std::vector<Json> types;
      for (const ModelRow& row : AllModels()) types.push_back(RowJson(row));
      PrintJsonArray(types);
    } else {
      PrintTable(TypeRows());
    }
    return kExitDone;
  };
}

}  // namespace zel::tool
