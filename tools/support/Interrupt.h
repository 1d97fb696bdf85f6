#pragma once

namespace zel::tool {

/// From here on the first Ctrl-C (or termination request) is only noted, so that work can end properly; the
/// second one ends the program at once.
void WatchForInterrupt();

bool WasInterrupted();

}  // namespace zel::tool
