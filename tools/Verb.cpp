#include "tools/Verb.h"

namespace zel::tool {

Action DefineTypes(CLI::App& command, const Globals& globals);
Action DefineList(CLI::App& command, const Globals& globals);
Action DefineInfo(CLI::App& command, const Globals& globals);
Action DefineGet(CLI::App& command, const Globals& globals);
Action DefineSet(CLI::App& command, const Globals& globals);
Action DefineSnap(CLI::App& command, const Globals& globals);
Action DefineGrab(CLI::App& command, const Globals& globals);
Action DefineDevelop(CLI::App& command, const Globals& globals);
Action DefineReplay(CLI::App& command, const Globals& globals);
Action DefineTrace(CLI::App& command, const Globals& globals);

std::span<const Verb> Verbs() {
  static constexpr Verb kVerbs[] = {
      {"types", "The camera types that the library knows", DefineTypes},
      {"list", "The cameras that answer now", DefineList},
      {"info", "The data sheet of a camera", DefineInfo},
      {"get", "Properties of a camera, with their ranges", DefineGet},
      {"set", "Sets properties: all are checked first, then all applied", DefineSet},
      {"snap", "Takes and saves one fresh picture", DefineSnap},
      {"grab", "Captures frames and measures; saves them with -o", DefineGrab},
      {"develop", "Converts a raw frame file to a picture, without a camera", DefineDevelop},
      {"replay", "Runs a recorded session without its camera and compares the driver calls", DefineReplay},
      {"trace", "Runs steps on a camera and shows every driver call", DefineTrace},
  };
  return kVerbs;
}

}  // namespace zel::tool
