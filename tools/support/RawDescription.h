#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "tools/support/Camera.h"
#include "tools/support/Capture.h"
#include "tools/support/Development.h"
#include "tools/support/Output.h"

/// What a raw file does not say itself stands in a JSON file beside it: `a.raw.json` for `a.raw`.
namespace zel::tool {

std::filesystem::path DescriptionOf(const std::filesystem::path& raw);

/// The camera, its colour matrix and those of its settings that need no access to it. Before the capture
/// starts, which may change them on another thread.
Json DescribeCamera(Camera& camera);

/// `WritePicture`, and for a raw file also the description: `DescribeCamera`'s with the frame's own size,
/// bits, formats and phase.
void SaveFrame(const CapturedFrame& frame, FileFormat format, const std::filesystem::path& path,
               const Json& camera);

/// What `develop` takes from a description.
struct RawDescription {
  LONG width = 0, height = 0;
  LONG bits = 8, inputFormat = 0;
  std::optional<LONG> outputFormat, whitePixel, whiteThreshold;
  std::vector<double> colorMatrix;
  std::vector<std::optional<LONG>> settings;  ///< one for each of `DevelopSettings()`
};

/// Nothing when there is no description. Throws a usage error for one that can't be read.
std::optional<RawDescription> ReadDescription(const std::filesystem::path& raw);

}  // namespace zel::tool
