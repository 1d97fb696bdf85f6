#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "models/ModelTable.h"
#include "tools/Verb.h"
#include "tools/support/Output.h"

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

}  // namespace

Action DefineTypes(CLI::App&, const Globals& globals) {
  return [&globals] {
    if (globals.json) {
      std::vector<Json> types;
      for (const ModelRow& row : AllModels()) types.push_back(RowJson(row));
      PrintJsonArray(types);
      return kExitDone;
    }
    std::vector<std::vector<std::string>> table{{"type", "name", "family", "size", "smallest",
                                                 "gain (default)", "shutter (default)", "sub-sampling"}};
    for (const ModelRow& row : AllModels()) {
      table.push_back({std::to_string(row.type), DisplayName(row.type), FamilyName(row.family),
                       SizeText(row.full), row.smallest ? SizeText(*row.smallest) : "-", RangeText(row.gain),
                       RangeText(row.shutter), TextOrDash(row.subSampling)});
    }
    PrintTable(table);
    return kExitDone;
  };
}

}  // namespace zel::tool
