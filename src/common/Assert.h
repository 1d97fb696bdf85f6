#pragma once

#include <cstdio>
#include <cstdlib>
#include <source_location>

/// Checks of the library's own contracts. They stay on in release builds: the next step after a broken one
/// would be an access outside a buffer.
namespace zel {

/// Unless `holds`: reports the broken condition, file and line on standard error and aborts.
inline void Assert(bool holds, const char* condition,
                   std::source_location where = std::source_location::current()) {
  if (holds) [[likely]]
    return;
  std::fprintf(stderr, "Assertion failed: %s, file %s, line %u\n", condition, where.file_name(),
               static_cast<unsigned>(where.line()));
  std::fflush(stderr);
  std::abort();
}

}  // namespace zel
