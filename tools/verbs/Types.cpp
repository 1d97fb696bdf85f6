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
#include "tools/verbs/TypesPage.h"

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

/// Settings that go to the camera's registers, each with its name on the page.
struct RegisterSetting {
  LONG id;
  const char* name;
};
constexpr RegisterSetting kRegisterSettings[] = {
    {kRoiLeft, "window"},
    {kSubSampleX, "sub-sampling"},
    {kShutter, "shutter"},
    {kDigitalGlobalGain, "gain"},
    {kAnalogGlobalGain, "analogue gain"},
    {kHorMirror, "horizontal mirror"},
    {kVerMirror, "vertical mirror"},
    {kExtTrigger, "trigger"},
    {kHalfClock, "half clock"},
    {kStrobe, "strobe"},
    {kAutoThresh, "automatic threshold"},
    {kWhitePixelCanceling, "white pixel cancelling"},
    {kBlackPixelCanceling, "black pixel cancelling"},
    {kDenoise, "noise filter"},
    {kEdgeEnhance, "edge filter"},
    {kLensCorrection, "lens correction"},
    {kNightMode, "night mode"},
    {kFocusPosition, "focus"},
};

/// Those that a type offers, by whether the camera's documentation gives their registers.
std::string OfferedSettings(LONG type, bool documented) {
  const std::unique_ptr<CZELDevice> camera(CreateDeviceForType(static_cast<std::uint32_t>(type)));
  std::string offered;
  for (const auto& [id, name] : kRegisterSettings) {
    if (camera == nullptr || camera->GetProperty()->IsPropertySupported(id) != S_OK) continue;
    if (IsDocumented(type, id) == documented) offered += (offered.empty() ? "" : ", ") + std::string(name);
  }
  return offered.empty() ? "-" : offered;
}

void PrintMarkdown() {
  Rows rows = TypeRows();
  for (const bool documented : {true, false}) {
    rows.front().push_back(documented ? "documented registers" : "registers chosen here");
    for (const ModelRow& row : AllModels())
      rows[static_cast<std::size_t>(row.type) + 1].push_back(OfferedSettings(row.type, documented));
  }
  rows.insert(rows.begin() + 1, std::vector<std::string>(rows.front().size(), "---"));

  PrintLine(kTypesPageHead);
  for (const auto& row : rows) PrintLine(fmt::format("| {} |", fmt::join(row, " | ")));
  PrintLine(kTypesPageTail);
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
