#include "tools/support/CameraReport.h"

#include <fmt/format.h>

#include "models/ModelTable.h"

namespace zel::tool {
namespace {

Json PropertyJson(const PropertyName& property, const PropertyState& state) {
  Json json;
  json["name"] = property.name;
  json["id"] = property.id == kNoRecord ? Json(nullptr) : Json(property.id);
  json["min"] = JsonOrNull(state.minimum);
  json["max"] = JsonOrNull(state.maximum);
  json["default"] = JsonOrNull(state.defaultValue);
  json["current"] = JsonOrNull(state.current);
  json["supported"] = state.supported;
  json["unit"] = property.unit;
  json["text"] = property.text;
  return json;
}

std::vector<std::string> PropertyRow(const PropertyName& property, const PropertyState& state) {
  return {std::string(property.name),
          property.id == kNoRecord ? "-" : std::to_string(property.id),
          TextOrDash(state.minimum),
          TextOrDash(state.maximum),
          TextOrDash(state.defaultValue),
          TextOrDash(state.current),
          state.supported ? "yes" : "no",
          property.unit,
          property.text};
}

}  // namespace

Json CameraJson(CameraId id) {
  Json json;
  json["camera"] = ToText(id);
  json["type"] = id.type;
  json["index"] = id.index;
  json["class"] = fmt::format("CZELModel{:02}", id.type);
  json["name"] = CameraName(id.type);
  json["family"] = FamilyName(ModelOf(id.type).family);
  return json;
}

ExitCode ReportProperties(Camera& camera, const std::vector<const PropertyName*>& properties,
                          const Globals& globals, Json json) {
  ExitCode code = kExitDone;
  std::vector<std::vector<std::string>> table{
      {"name", "id", "min", "max", "default", "current", "supported", "unit", "meaning"}};
  json["properties"] = Json::array();
  for (const PropertyName* const property : properties) {
    const PropertyState state = ReadProperty(camera, *property);
    if (state.supported && FAILED(state.result)) {
      PrintWarning(globals, fmt::format("{} can't be read from {} ({})", property->name, camera.Label(),
                                        ResultText(state.result)));
      code = kExitFailed;
    }
    json["properties"].push_back(PropertyJson(*property, state));
    table.push_back(PropertyRow(*property, state));
  }
  if (globals.json) {
    PrintJson(json);
  } else {
    PrintTable(table);
  }
  return code;
}

}  // namespace zel::tool
