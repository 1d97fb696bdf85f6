#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "tools/Verb.h"
#include "tools/support/CameraReport.h"
#include "tools/support/CaptureOptions.h"
#include "tools/support/Interrupt.h"
#include "tools/support/RawDescription.h"
#include "tools/support/Watchdog.h"

namespace zel::tool {
namespace {

ExitCode Snap(const CaptureOptions& options, const Globals& globals) {
  const std::optional<FilePattern> pattern = options.Pattern();
  const std::vector<PropertySetting> settings = ParseSettings(options.settings);
  if (!pattern || pattern->IsNumbered()) throw ToolError(kExitUsage, "-o needs the name of one file");
  pattern->CheckWritable(1, options.force);

  Camera camera = OpenWithSettings(globals.camera, settings);
  WatchForInterrupt();
  Watchdog watchdog(camera);
  CapturedFrame frame;
  const Json description = DescribeCamera(camera);
  // On demand: a frame that was exposed before now can't be in it.
  const auto capture = StartCapture(camera, kDeliverOnDemand, KeepFor(pattern));
  while (!capture->Next(&frame, 100)) {
    if (WasInterrupted()) return kExitInterrupted;
    watchdog.NoFrame();
  }
  const std::optional<std::uint32_t> luminance = MeanLuminance(camera);
  const std::filesystem::path path = pattern->PathOf(1);
  SaveFrame(frame, pattern->Format(), path, description);

  if (globals.json) {
    Json json = CameraJson(camera.Id());
    json["file"] = ToText(path);
    json["width"] = frame.width;
    json["height"] = frame.height;
    json["mean_luminance"] = JsonOrNull(luminance);
    json["bytes"] = std::filesystem::file_size(path);
    PrintJson(json);
  } else {
    PrintLine(fmt::format("{}  {}x{}  mean luminance {}  {}", ToText(path), frame.width, frame.height,
                          TextOrDash(luminance), camera.Label()));
  }
  return kExitDone;
}

}  // namespace

Action DefineSnap(CLI::App& command, const Globals& globals) {
  auto options = std::make_shared<CaptureOptions>();
  options->AddTo(command, "The file: .bmp, .jpg, or .raw for the frame as the camera sent it")->required();
  return [options, &globals] { return Snap(*options, globals); };
}

}  // namespace zel::tool
