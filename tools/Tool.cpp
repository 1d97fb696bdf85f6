#include "tools/Tool.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <map>

#include "imaging/PictureReader.h"
#include "platform/Environment.h"
#include "sim/SimConfiguration.h"
#include "tools/Verb.h"
#include "tools/support/OutputFiles.h"
#include "tools/support/Words.h"

namespace zel::tool {
namespace {

/// Says what is wrong with the simulated cameras before any of them is used.
void CheckSimulation() {
  std::string error;
  const auto configuration = SimConfigurationFromEnvironment(&error);
  if (!error.empty()) throw ToolError(kExitUsage, error);
  if (!configuration || configuration->scene.empty()) return;
  Picture scene;
  if (!ReadPicture(ToPath(configuration->scene), &scene, &error)) {
    throw ToolError(kExitUsage, "ZELCAM_SCENE: " + error);
  }
}

/// What the environment variable would do; the library has not looked at it yet.
void SimulateCameras(const std::string& cameras) {
  std::vector<SimCameraAddress> addresses;
  std::string error;
  if (!ParseSimCameras(cameras, &addresses, &error)) {
    constexpr std::string_view kVariable = "ZELCAM_SIM";
    if (error.starts_with(kVariable)) error.replace(0, kVariable.size(), "--sim");
    throw ToolError(kExitUsage, error);
  }
  SetEnvironment("ZELCAM_SIM", cameras);
}

/// The verbs take what is theirs; what is left nobody knows.
void CheckLeftOver(const CLI::App& app) {
  const std::vector<std::string> left = app.remaining();
  const auto chosen = app.get_subcommands();
  if (!left.empty() && left.front().starts_with('-')) {
    throw ToolError(kExitUsage, fmt::format("unknown option '{}'", left.front()));
  }
  if (!left.empty() && !chosen.empty()) {
    throw ToolError(kExitUsage, fmt::format("'{}' is one argument too many", left.front()));
  }
  if (!left.empty()) {
    std::vector<std::string_view> names;
    for (const Verb& verb : Verbs()) names.push_back(verb.name);
    const std::string_view meant = Nearest(left.front(), names);
    throw ToolError(kExitUsage, fmt::format("unknown verb '{}'", left.front()),
                    meant.empty() ? "`zelcam --help` lists them" : fmt::format("did you mean '{}'?", meant));
  }
  if (chosen.empty()) throw ToolError(kExitUsage, "a verb is missing", "`zelcam --help` lists them");
}

ExitCode ParseAndRun(const std::vector<std::string>& arguments) {
  CLI::App app("Drives ZEL cameras: lists, sets, captures, develops and traces.", "zelcam");
  app.allow_extras();
  app.allow_windows_style_options(false);
  app.fallthrough();  // so that the options for all verbs may stand behind the verb too
  app.require_subcommand(0, 1);
  app.set_help_flag("-h,--help", "Print this help");
  app.set_version_flag("--version", "zelcam " ZELCAM_VERSION, "Print the version");

  Globals globals;
  std::string sim;
  auto* const simOption =
      app.add_option("--sim", sim, "Simulated cameras instead of real ones: TYPE[@INDEX],...");
  app.add_option("-c,--camera", globals.camera,
                 "TYPE or TYPE@INDEX; not needed when only one camera answers");
  app.add_flag("--json", globals.json, "Results for programs");
  auto* const quiet = app.add_flag("-q,--quiet", globals.quiet, "Errors only");
  app.add_flag("-v,--verbose", globals.verbose, "Say more")->excludes(quiet);

  std::map<const CLI::App*, Action> actions;
  for (const Verb& verb : Verbs()) {
    CLI::App* const command = app.add_subcommand(verb.name, verb.text);
    actions[command] = verb.define(*command, globals);
  }

  try {
    app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::Success& asked) {
    app.exit(asked);
    return kExitDone;
  } catch (const CLI::ParseError& error) {
    throw ToolError(kExitUsage, error.what());
  }
  CheckLeftOver(app);
  if (simOption->count() > 0) SimulateCameras(sim);
  CheckSimulation();
  return actions.at(app.get_subcommands().front())();
}

}  // namespace

int RunTool(const std::vector<std::string>& arguments) {
  const auto report = [](const char* text, const std::string& hint) {
    fmt::print(stderr, "zelcam: error: {}\n", text);
    if (!hint.empty()) fmt::print(stderr, "hint: {}\n", hint);
  };
  try {
    return ParseAndRun(arguments);
  } catch (const ToolError& error) {
    report(error.what(), error.Hint());
    return error.Code();
  } catch (const std::exception& error) {
    report(error.what(), {});
    return kExitFailed;
  }
}

}  // namespace zel::tool
