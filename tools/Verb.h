#pragma once

#include <functional>
#include <span>

#include "tools/support/Globals.h"
#include "tools/support/ToolError.h"

namespace CLI {
class App;
}

namespace zel::tool {

/// Does a verb's work once the command line was read; throws `ToolError`.
using Action = std::function<ExitCode()>;

/// A word that the program does something at. A new verb is one file in verbs/ and one row of the table.
struct Verb {
  const char* name;
  const char* text;
  /// Gives the command its options. `globals` outlives the action and has its values when that runs.
  Action (*define)(CLI::App& command, const Globals& globals);
};

std::span<const Verb> Verbs();

}  // namespace zel::tool
