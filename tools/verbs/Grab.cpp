#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cmath>
#include <limits>

#include "platform/Threads.h"
#include "tools/Verb.h"
#include "tools/support/CameraReport.h"
#include "tools/support/CaptureOptions.h"
#include "tools/support/Interrupt.h"
#include "tools/support/Progress.h"
#include "tools/support/RawDescription.h"
#include "tools/support/Recording.h"
#include "tools/support/Watchdog.h"
#include "tools/support/Words.h"

namespace zel::tool {
namespace {

struct GrabOptions {
  CaptureOptions capture;
  std::int64_t frames = 0;  ///< 0: no limit
  std::string duration;
  std::string mode = "callback";
  std::string record;  ///< file; empty: not recorded
};

/// To what a reader can use: microseconds, millionths of a frame.
double Rounded(double value) {
  return std::round(value * 1e6) / 1e6;
}

/// One run: takes frames until the goal, an interruption or an error.
class Grab {
 public:
  Grab(Camera& camera, const GrabOptions& options, std::int64_t durationMs,
       const std::optional<FilePattern>& pattern, const Globals& globals, Recording* recording,
       RecordedRun* run)
      : camera_(camera),
        options_(options),
        durationNs_(static_cast<std::uint64_t>(durationMs) * 1'000'000),
        pattern_(pattern),
        globals_(globals),
        recording_(recording),
        run_(*run),
        watchdog_(camera),
        progress_(globals, options.frames) {}

  ExitCode Run() {
    if (pattern_) description_ = DescribeCamera(camera_);
    const auto capture = StartCapture(camera_, *ParseDeliveryMode(options_.mode), KeepFor(pattern_));
    startNs_ = NowNs();
    try {
      while (!IsAtGoal() && !WasInterrupted()) {
        if (capture->Next(&frame_, 50)) {
          watchdog_.FrameCame();
          TakeFrame();
        } else {
          watchdog_.NoFrame();
        }
        if (recording_ != nullptr) recording_->Check();
        Count(*capture);
        progress_.Show(counts_);
      }
    } catch (const ToolError&) {
      // What was captured so far is whole and worth its summary.
      Finish(*capture);
      throw;
    }
    Finish(*capture);
    return IsAtGoal() ? kExitDone : kExitInterrupted;
  }

 private:
  bool IsAtGoal() const {
    return (options_.frames > 0 && counts_.frames >= options_.frames) ||
           (durationNs_ > 0 && counts_.ns >= durationNs_);
  }

  void Count(const Capture& capture) {
    counts_.ns = NowNs() - startNs_;
    counts_.dropped = capture.Dropped();
  }

  void TakeFrame() {
    const std::int64_t number = counts_.frames + 1;
    Json line;
    line["frame"] = number;
    line["time_s"] = Rounded(static_cast<double>(frame_.arrivedNs - startNs_) * 1e-9);
    line["width"] = frame_.width;
    line["height"] = frame_.height;
    line["bytes"] = frame_.rawBytes;
    if (pattern_) {
      const std::filesystem::path path = pattern_->PathOf(number);
      SaveFrame(frame_, pattern_->Format(), path, description_);
      line["file"] = ToText(path);
    }
    if (globals_.json) PrintJson(line);
    counts_.frames = number;
    counts_.bytes += frame_.rawBytes;
  }

  void Finish(const Capture& capture) {
    Count(capture);
    run_.reads = watchdog_.Reads();
    run_.frames = counts_.frames;
    run_.looks = watchdog_.Looks();
    progress_.Finish(counts_);
    if (globals_.json) {
      Json json = CameraJson(camera_.Id());
      json["mode"] = options_.mode;
      json["frames"] = counts_.frames;
      json["seconds"] = Rounded(counts_.Seconds());
      json["fps"] = Rounded(counts_.FramesPerSecond());
      json["bytes"] = counts_.bytes;
      json["dropped"] = counts_.dropped;
      PrintJson(json);
    } else if (pattern_ && counts_.frames > 0) {
      const std::string first = ToText(pattern_->PathOf(1)), last = ToText(pattern_->PathOf(counts_.frames));
      PrintLine(first == last ? first : fmt::format("{} .. {}", first, last));
    }
  }

  Camera& camera_;
  const GrabOptions& options_;
  const std::uint64_t durationNs_;
  const std::optional<FilePattern>& pattern_;
  const Globals& globals_;
  Recording* const recording_;
  RecordedRun& run_;
  Watchdog watchdog_;
  Progress progress_;
  Progress::Counts counts_;
  CapturedFrame frame_;
  Json description_;  ///< for raw files
  std::uint64_t startNs_ = 0;
};

ExitCode RunGrab(const GrabOptions& options, const Globals& globals) {
  std::int64_t durationMs = 0;
  if (!options.duration.empty()) {
    const auto duration = ParseDuration(options.duration);
    if (!duration) {
      throw ToolError(kExitUsage,
                      fmt::format("'{}' is not a duration like 500ms, 10s or 2m", options.duration));
    }
    durationMs = *duration;
  }
  const std::vector<PropertySetting> settings = ParseSettings(options.capture.settings);
  const std::optional<FilePattern> pattern = options.capture.Pattern();
  if (pattern) {
    if (!pattern->IsNumbered() && options.frames != 1) {
      throw ToolError(kExitUsage,
                      fmt::format("'{}' would be overwritten by each frame", options.capture.output),
                      "put {frame} or {frame:06} into the name");
    }
    pattern->CheckWritable(options.frames > 0 ? options.frames : std::numeric_limits<std::int64_t>::max(),
                           options.capture.force);
  }
  const CameraId id = SelectCamera(globals.camera);
  std::optional<Recording> recording;
  if (!options.record.empty()) recording.emplace(options.record, options.capture.force);
  RecordedRun run;
  run.camera = ToText(id);
  run.mode = options.mode;
  run.settings = options.capture.settings;
  const auto capture = [&] {
    Camera camera(id);
    camera.Open();
    ApplySettings(camera, settings);
    WatchForInterrupt();
    return Grab(camera, options, durationMs, pattern, globals, recording ? &*recording : nullptr, &run).Run();
  };
  ExitCode code = kExitDone;
  try {
    code = capture();
  } catch (const ToolError& error) {
    // A session that failed is what a recording is for.
    run.error = error.what();
    const std::string unwritten = recording ? recording->Finish(run) : "";
    if (unwritten.empty()) throw;
    throw ToolError(error.Code(), fmt::format("{}; {}", error.what(), unwritten), error.Hint());
  }
  const std::string unwritten = recording ? recording->Finish(run) : "";
  if (!unwritten.empty()) throw ToolError(kExitFailed, unwritten);
  return code;
}

}  // namespace

Action DefineGrab(CLI::App& command, const Globals& globals) {
  auto options = std::make_shared<GrabOptions>();
  command.add_option("-n,--frames", options->frames, "So many frames; without -n and -t until Ctrl-C")
      ->check(CLI::Range(std::int64_t{1}, std::numeric_limits<std::int64_t>::max()));
  command.add_option("-t,--time", options->duration, "So long: 500ms, 10s, 2m");
  auto* const mode =
      command.add_option("--mode", options->mode, "How frames are delivered: callback, queue or ondemand");
  mode->check(CLI::IsMember({"callback", "queue", "ondemand"}))->capture_default_str();
  options->capture.AddTo(command,
                         "Save each frame; {frame} or {frame:06} stands for its number; .bmp, .jpg or .raw");
  command.add_option("--record", options->record,
                     "Write the session, with every driver call and frame, to this file for `zelcam replay`; "
                     "in ondemand mode unless --mode is given, because the other modes depend on timing and "
                     "may differ in a replay");
  return [options, mode, &globals] {
    if (!options->record.empty() && mode->count() == 0) options->mode = "ondemand";
    return RunGrab(*options, globals);
  };
}

}  // namespace zel::tool
