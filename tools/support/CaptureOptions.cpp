#include "tools/support/CaptureOptions.h"

#include <CLI/CLI.hpp>

namespace zel::tool {

CLI::Option* CaptureOptions::AddTo(CLI::App& command, const char* outputText) {
  command.add_flag("--force", force, "Overwrite existing files");
  command.add_option("--set", settings, "NAME=VALUE: set a property for this run; may be repeated")
      ->allow_extra_args(false);
  return command.add_option("-o,--output", output, outputText);
}

std::optional<FilePattern> CaptureOptions::Pattern() const {
  if (output.empty()) return std::nullopt;
  return FilePattern(output, {FileFormat::Bitmap, FileFormat::Jpeg, FileFormat::Raw});
}

Keep KeepFor(const std::optional<FilePattern>& pattern) {
  if (!pattern) return Keep::Nothing;
  return pattern->Format() == FileFormat::Raw ? Keep::Raw : Keep::Pixels;
}

Camera OpenWithSettings(std::string_view selection, const std::vector<PropertySetting>& settings) {
  Camera camera(SelectCamera(selection));
  camera.Open();
  ApplySettings(camera, settings);
  return camera;
}

}  // namespace zel::tool
