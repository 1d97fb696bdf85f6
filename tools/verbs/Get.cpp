#include <CLI/CLI.hpp>

#include "tools/Verb.h"
#include "tools/support/CameraReport.h"

namespace zel::tool {

Action DefineGet(CLI::App& command, const Globals& globals) {
  auto patterns = std::make_shared<std::vector<std::string>>();
  command.add_option("NAME", *patterns, "Names, or patterns with * and ?; all properties without one");
  return [patterns, &globals] {
    const std::vector<const PropertyName*> properties = MatchProperties(*patterns);
    Camera camera(SelectCamera(globals.camera));
    camera.Open();
    return ReportProperties(camera, properties, globals, CameraJson(camera.Id()));
  };
}

}  // namespace zel::tool
