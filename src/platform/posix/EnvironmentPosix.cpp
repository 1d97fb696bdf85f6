#include <stdlib.h>

#include "platform/Environment.h"

namespace zel {

std::optional<std::string> GetEnvironment(const char* name) {
  const char* const value = getenv(name);
  if (value == nullptr) return {};
  return value;
}

void SetEnvironment(const std::string& name, const std::string& value) {
  setenv(name.c_str(), value.c_str(), 1);
}

}  // namespace zel
