#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <array>

#include "models/ModelTable.h"
#include "tools/Verb.h"
#include "tools/support/CameraReport.h"

namespace zel::tool {
namespace {

/// Empty when the camera type keeps none.
std::string SerialNumber(Camera& camera) {
  // Eight characters and a zero; the rest is for types that answer with more.
  std::array<unsigned char, 64> text{};
  if (FAILED(camera.Properties().GetSerialNum(text.data()))) return {};
  text.back() = 0;
  std::string serial;
  for (const unsigned char* c = text.data(); *c != 0; ++c)
    serial += *c >= 0x20 && *c < 0x7F ? static_cast<char>(*c) : '?';
  return serial;
}

std::vector<const PropertyName*> OfferedProperties(Camera& camera) {
  std::vector<const PropertyName*> offered;
  for (const PropertyName& property : PropertyNames()) {
    if (ReadProperty(camera, property).supported) offered.push_back(&property);
  }
  return offered;
}

std::string FactText(const Json& value) {
  if (value.is_null()) return "-";
  return value.is_string() ? value.get<std::string>() : value.dump();
}

void PrintFacts(const Json& facts) {
  for (const auto& [name, value] : facts.items()) {
    PrintLine(fmt::format("{:<12}  {}", name, FactText(value)));
  }
  PrintLine("");
}

}  // namespace

Action DefineInfo(CLI::App&, const Globals& globals) {
  return [&globals] {
    Camera camera(SelectCamera(globals.camera));
    camera.Open();
    const ModelRow& model = ModelOf(camera.Id().type);
    Json facts = CameraJson(camera.Id());
    facts["width"] = model.full.width;
    facts["height"] = model.full.height;
    facts["min_width"] = model.smallest ? Json(model.smallest->width) : Json(nullptr);
    facts["min_height"] = model.smallest ? Json(model.smallest->height) : Json(nullptr);
    facts["subsampling"] = JsonOrNull(model.subSampling);
    const std::string serial = SerialNumber(camera);
    facts["serial"] = serial.empty() ? Json(nullptr) : Json(serial);
    if (!globals.json) PrintFacts(facts);
    return ReportProperties(camera, OfferedProperties(camera), globals, facts);
  };
}

}  // namespace zel::tool
