#pragma once

namespace zel {

/// What the first use of the library does, once: simulated cameras take the place of connected ones when the
/// environment asks for them. False, each time, when that request can't be read; the reason is printed to
/// standard error once. Any thread.
bool StartLibrary();

}  // namespace zel
