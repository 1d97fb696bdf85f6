#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/RecordingDriverHost.h"
#include "tools/support/Camera.h"

namespace zel::tool {

/// What was done with a camera while it was recorded, so that it can be done again.
struct RecordedRun {
  std::string camera;                 ///< "13@0"
  std::string mode;                   ///< how frames were delivered, as `grab --mode` takes it
  std::vector<std::string> settings;  ///< "NAME=VALUE", in the order in which they were made
  std::int64_t reads = 0;             ///< attempts to get a frame
  std::int64_t frames = 0;            ///< those that brought one
  std::vector<std::int64_t> looks;    ///< the reads, from 1, after which the camera was probed
  std::string error;                  ///< that ended it, or empty

  /// JSON.
  std::string ToText() const;
  /// Nothing when the text is no such description.
  static std::optional<RecordedRun> From(const std::string& text);
};

/// Records what the library does with cameras as long as it lives. The library must have started, and cameras
/// opened meanwhile must be gone before.
class Recording {
 public:
  /// Throws when the file is there already and not to be overwritten, or can't be written.
  Recording(const std::string& file, bool overwrite);

  /// Throws, once, when the file can't be written any more.
  void Check();
  /// Gives the file its name; without it nothing remains. Returns why that failed unless `Check` has told.
  std::string Finish(const RecordedRun& run);

 private:
  std::string UntoldError();

  const std::string file_;
  std::optional<RecordingDriverHost> host_;
  std::optional<ScopedDriverHost> installed_;
  bool told_ = false;
};

}  // namespace zel::tool
