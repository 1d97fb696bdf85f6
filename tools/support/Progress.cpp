#include "tools/support/Progress.h"

#include <fmt/format.h>

#include <cstdio>

#include "platform/Console.h"

namespace zel::tool {

Progress::Progress(const Globals& globals, std::int64_t goal)
    : goal_(goal), quiet_(globals.quiet), terminal_(IsErrorTerminal()) {
  if (terminal_) periodNs_ = 250'000'000;
  if (!terminal_ && globals.verbose) periodNs_ = 1'000'000'000;
  nextNs_ = periodNs_;
}

void Progress::Show(const Counts& counts) {
  if (quiet_ || periodNs_ == 0 || counts.ns < nextNs_) return;
  nextNs_ = counts.ns + periodNs_;
  Print(RunningText(counts, goal_), !terminal_);
}

void Progress::Finish(const Counts& counts) {
  if (!quiet_) Print(FinalText(counts), true);
}

std::string Progress::RunningText(const Counts& counts, std::int64_t goal) {
  const double rate = counts.ns == 0 ? 0 : static_cast<double>(counts.bytes) / counts.Seconds() * 1e-6;
  const auto seconds = static_cast<std::int64_t>(counts.Seconds());
  return fmt::format("{}{}  {:.1f} fps  {:.2f} MB/s  dropped {}  {}:{:02}", counts.frames,
                     goal > 0 ? fmt::format("/{}", goal) : "", counts.FramesPerSecond(), rate, counts.dropped,
                     seconds / 60, seconds % 60);
}

std::string Progress::FinalText(const Counts& counts) {
  return fmt::format("{} frame{} in {:.1f} s, {:.1f} fps, dropped {}", counts.frames,
                     counts.frames == 1 ? "" : "s", counts.Seconds(), counts.FramesPerSecond(),
                     counts.dropped);
}

void Progress::Print(std::string line, bool last) {
  const std::size_t length = line.size();
  if (shownLength_ > length) line.append(shownLength_ - length, ' ');
  std::fprintf(stderr, "%s%s%s", terminal_ ? "\r" : "", line.c_str(), last ? "\n" : "");
  std::fflush(stderr);
  shownLength_ = last ? 0 : length;
}

}  // namespace zel::tool
