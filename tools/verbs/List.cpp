#include <CLI/CLI.hpp>

#include "models/ModelTable.h"
#include "sim/SimConfiguration.h"
#include "tools/Verb.h"
#include "tools/support/CameraReport.h"

namespace zel::tool {

Action DefineList(CLI::App&, const Globals& globals) {
  return [&globals] {
    std::string error;
    const bool simulated = SimConfigurationFromEnvironment(&error).has_value();
    const std::vector<CameraId> cameras = AnsweringCameras();
    if (globals.json) {
      std::vector<Json> list;
      for (const CameraId id : cameras) {
        list.push_back(CameraJson(id));
        list.back()["simulated"] = simulated;
      }
      PrintJsonArray(list);
      return kExitDone;
    }
    if (cameras.empty()) {
      PrintWarning(globals, "no camera answers; --sim 13 gives a simulated one");
      return kExitDone;
    }
    std::vector<std::vector<std::string>> table{{"camera", "name", "family", "kind"}};
    for (const CameraId id : cameras) {
      table.push_back({ToText(id), CameraName(id.type), FamilyName(ModelOf(id.type).family),
                       simulated ? "simulated" : "real"});
    }
    PrintTable(table);
    return kExitDone;
  };
}

}  // namespace zel::tool
