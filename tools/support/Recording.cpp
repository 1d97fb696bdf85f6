#include "tools/support/Recording.h"

#include <fmt/format.h>

#include <filesystem>
#include <utility>

#include "tools/support/Output.h"
#include "tools/support/OutputFiles.h"
#include "tools/support/ToolError.h"

namespace zel::tool {

std::string RecordedRun::ToText() const {
  Json json;
  json["camera"] = camera;
  json["mode"] = mode;
  json["settings"] = settings;
  json["reads"] = reads;
  json["frames"] = frames;
  json["looks"] = looks;
  json["error"] = error;
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::optional<RecordedRun> RecordedRun::From(const std::string& text) try {
  const Json json = Json::parse(text);
  RecordedRun run;
  json.at("camera").get_to(run.camera);
  json.at("mode").get_to(run.mode);
  json.at("settings").get_to(run.settings);
  json.at("reads").get_to(run.reads);
  json.at("frames").get_to(run.frames);
  json.at("looks").get_to(run.looks);
  json.at("error").get_to(run.error);
  return run;
} catch (const Json::exception&) {
  return std::nullopt;
}

Recording::Recording(const std::string& file, bool overwrite) : file_(file) {
  const std::filesystem::path path = ToPath(file);
  std::error_code ignored;
  if (!overwrite && std::filesystem::exists(path, ignored))
    throw ToolError(kExitUsage, fmt::format("'{}' exists already", file), "--force overwrites it");
  host_.emplace(CurrentDriverHost(), path);
  Check();
  installed_.emplace(*host_);
}

std::string Recording::UntoldError() {
  const std::string error = host_->Error();
  if (error.empty() || std::exchange(told_, true)) return {};
  return fmt::format("the recording '{}' can't be written: {}", file_, error);
}

void Recording::Check() {
  if (const std::string error = UntoldError(); !error.empty()) throw ToolError(kExitFailed, error);
}

std::string Recording::Finish(const RecordedRun& run) {
  installed_.reset();
  (void)host_->Finish(run.ToText());
  return UntoldError();
}

}  // namespace zel::tool
