#pragma once

#include <string>

namespace zel {

/// Priority and processors of this thread, in its system's words.
std::string ThreadPlacement();

}  // namespace zel
