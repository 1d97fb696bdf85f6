#pragma once

#include <cstdint>
#include <string>

#include "tools/support/Globals.h"

namespace zel::tool {

/// How far a capture is, for a person: on a terminal one line rewritten four times a second, with -v one line
/// a second elsewhere, and a last line in any case but -q. All on standard error.
class Progress {
 public:
  struct Counts {
    std::int64_t frames = 0;
    std::int64_t dropped = 0;
    std::int64_t bytes = 0;  ///< of all raw frames
    std::uint64_t ns = 0;    ///< since the start

    double Seconds() const { return static_cast<double>(ns) * 1e-9; }
    double FramesPerSecond() const { return ns == 0 ? 0 : static_cast<double>(frames) / Seconds(); }
  };

  /// `goal` in frames; 0: none.
  Progress(const Globals& globals, std::int64_t goal);

  void Show(const Counts& counts);
  void Finish(const Counts& counts);

  /// "250/1000  25.0 fps  6.55 MB/s  dropped 0  0:10"; MB are 10^6 bytes.
  static std::string RunningText(const Counts& counts, std::int64_t goal);
  /// "1000 frames in 40.0 s, 25.0 fps, dropped 0"
  static std::string FinalText(const Counts& counts);

 private:
  void Print(std::string line, bool last);

  const std::int64_t goal_;
  const bool quiet_, terminal_;
  std::uint64_t periodNs_ = 0;  ///< 0: no running line
  std::uint64_t nextNs_ = 0;
  std::size_t shownLength_ = 0;  ///< of the line on the terminal, to be wiped by the next
};

}  // namespace zel::tool
