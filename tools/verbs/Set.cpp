#include <CLI/CLI.hpp>

#include "tools/Verb.h"
#include "tools/support/CameraReport.h"

namespace zel::tool {

Action DefineSet(CLI::App& command, const Globals& globals) {
  auto texts = std::make_shared<std::vector<std::string>>();
  command.add_option("SETTING", *texts, "NAME=VALUE; numbers are decimal or start with 0x")->required();
  return [texts, &globals] {
    const std::vector<PropertySetting> settings = ParseSettings(*texts);
    Camera camera(SelectCamera(globals.camera));
    camera.Open();
    ApplySettings(camera, settings);
    std::vector<const PropertyName*> properties;
    properties.reserve(settings.size());
    for (const PropertySetting& setting : settings) properties.push_back(setting.property);
    return ReportProperties(camera, properties, globals, CameraJson(camera.Id()));
  };
}

}  // namespace zel::tool
