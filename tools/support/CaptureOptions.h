#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/support/Capture.h"
#include "tools/support/OutputFiles.h"
#include "tools/support/PropertySettings.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace zel::tool {

/// What the verbs that capture have in common: where pictures go and which settings hold for the run.
struct CaptureOptions {
  std::string output;
  bool force = false;
  std::vector<std::string> settings;

  /// Adds -o, --force and --set; returns -o.
  CLI::Option* AddTo(CLI::App& command, const char* outputText);

  /// The pattern behind -o, if it was given.
  std::optional<FilePattern> Pattern() const;
};

/// What of each frame such a file needs.
Keep KeepFor(const std::optional<FilePattern>& pattern);

/// The selected camera, open and with these settings.
Camera OpenWithSettings(std::string_view selection, const std::vector<PropertySetting>& settings);

}  // namespace zel::tool
