#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>

#include "platform/ReplayDriverHost.h"
#include "platform/Threads.h"
#include "tools/Verb.h"
#include "tools/support/CameraReport.h"
#include "tools/support/Capture.h"
#include "tools/support/OutputFiles.h"
#include "tools/support/PropertySettings.h"
#include "tools/support/Recording.h"
#include "tools/support/Watchdog.h"

namespace zel::tool {
namespace {

// Of a replay with worker threads, where a frame that the session had may be dropped this time.
constexpr std::uint64_t kPatienceNs = 5'000'000'000;

struct Recorded {
  Session session;
  RecordedRun run;
  CameraId camera;
  DeliveryMode mode = kDeliverOnDemand;
  std::vector<PropertySetting> settings;
};

/// Throws a usage error for anything that can't be replayed.
Recorded ReadRecording(const std::string& file) {
  Recorded recorded;
  std::string error;
  if (!ReadSession(ToPath(file), &recorded.session, &error))
    throw ToolError(kExitUsage, fmt::format("'{}' can't be read: {}", file, error));
  const auto run = RecordedRun::From(recorded.session.description);
  const auto mode = run ? ParseDeliveryMode(run->mode) : std::nullopt;
  if (!mode) throw ToolError(kExitUsage, fmt::format("'{}' does not say what was recorded", file));
  recorded.run = *run;
  recorded.mode = *mode;
  recorded.camera = SelectCamera(run->camera);
  recorded.settings = ParseSettings(run->settings);
  return recorded;
}

/// Does with the camera what was done then; returns the frames that came.
std::int64_t CaptureAgain(const Recorded& recorded, const ReplayDriverHost& host) {
  const RecordedRun& run = recorded.run;
  Camera camera(recorded.camera);
  camera.Open();
  ApplySettings(camera, recorded.settings);
  const Watchdog asThen(camera);  // its time-outs are not those of then, but what it asks at first is
  const auto capture = StartCapture(camera, recorded.mode, Keep::Nothing);
  CapturedFrame frame;
  std::int64_t frames = 0;
  if (recorded.mode == kDeliverOnDemand) {
    for (std::int64_t read = 1; read <= run.reads && !host.HasRunOut(); ++read) {
      frames += capture->Next(&frame, 0) ? 1 : 0;
      if (std::ranges::find(run.looks, read) != run.looks.end()) camera.IsConnected();
    }
    return frames;
  }
  std::uint64_t lastNs = NowNs();
  while (frames < run.frames && NowNs() - lastNs < kPatienceNs) {
    if (capture->Next(&frame, 50)) {
      ++frames;
      lastNs = NowNs();
    } else if (host.HasRunOut()) {
      break;
    }
  }
  return frames;
}

void Report(const Recorded& recorded, std::int64_t frames, const ReplayDriverHost::Summary& summary,
            const Globals& globals) {
  if (globals.json) {
    Json json = CameraJson(recorded.camera);
    json["mode"] = recorded.run.mode;
    json["frames_recorded"] = recorded.run.frames;
    json["frames"] = frames;
    json["identical"] = summary.IsIdentical();
    json["calls_matched"] = summary.matched;
    json["calls_different"] = summary.different;
    json["calls_never_made"] = summary.neverMade;
    json["differences"] = summary.differences;
    return PrintJson(json);
  }
  for (const std::string& difference : summary.differences) PrintLine(difference);
  if (summary.different > summary.differences.size())
    PrintLine(fmt::format("and {} more", summary.different - summary.differences.size()));
  if (summary.neverMade > 0) PrintLine(fmt::format("{} recorded calls were not made", summary.neverMade));
  PrintLine(fmt::format("{}, frames recorded: {}; {} of {} driver calls as recorded",
                        CameraName(recorded.camera.type), recorded.run.frames, summary.matched,
                        recorded.session.records.size()));
}

ExitCode RunReplay(const std::string& file, const Globals& globals) {
  const Recorded recorded = ReadRecording(file);
  const bool exact = recorded.mode == kDeliverOnDemand;
  ReplayDriverHost host(recorded.session,
                        exact ? ReplayDriverHost::Tail::Exact : ReplayDriverHost::Tail::MayVary);
  std::int64_t frames = 0;
  std::string error;
  {
    const ScopedDriverHost scope(host);
    try {
      frames = CaptureAgain(recorded, host);
    } catch (const ToolError& failure) {
      error = failure.what();
    }
  }
  if (recorded.run.error.empty() && !error.empty()) PrintWarning(globals, error);
  const ReplayDriverHost::Summary summary = host.Summarize();
  Report(recorded, frames, summary, globals);
  return summary.IsIdentical() ? kExitDone : kExitFailed;
}

}  // namespace

Action DefineReplay(CLI::App& command, const Globals& globals) {
  auto file = std::make_shared<std::string>();
  command.add_option("FILE", *file, "A session recorded by `grab --record`")->required();
  command.footer("Exit code 0: the same calls; 1: other calls; 2: the file can't be replayed.");
  return [file, &globals] { return RunReplay(*file, globals); };
}

}  // namespace zel::tool
