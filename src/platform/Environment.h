#pragma once

#include <optional>
#include <string>

/// The environment of this process, as it is now: also what a host program has set after loading the library.
namespace zel {

/// A variable's value in UTF-8, or nothing when it is not set.
std::optional<std::string> GetEnvironment(const char* name);

/// Sets a variable; ASCII name. Before other threads start.
void SetEnvironment(const std::string& name, const std::string& value);

}  // namespace zel
