#include "platform/ComponentTypes.h"
#include "platform/Environment.h"
#include "platform/Text.h"

namespace zel {
namespace {

std::wstring Wide(const std::string& utf8) {
  const std::u16string text = ToUtf16(utf8);
  return {text.begin(), text.end()};
}

}  // namespace

// The system's own variables: the C library's copy does not see what a host program sets through the system.
std::optional<std::string> GetEnvironment(const char* name) {
  const std::wstring wideName = Wide(name);
  std::wstring value(256, L'\0');
  for (;;) {
    SetLastError(ERROR_SUCCESS);
    const DWORD size =
        GetEnvironmentVariableW(wideName.c_str(), value.data(), static_cast<DWORD>(value.size()));
    if (size == 0 && GetLastError() == ERROR_ENVVAR_NOT_FOUND) return {};
    const bool fits = size < value.size();
    value.resize(size);
    if (fits) return ToUtf8(std::u16string(value.begin(), value.end()));
  }
}

void SetEnvironment(const std::string& name, const std::string& value) {
  SetEnvironmentVariableW(Wide(name).c_str(), Wide(value).c_str());
}

}  // namespace zel
