#include "api/server/ModulePath.h"

#include "platform/ComponentTypes.h"

namespace zel {

std::wstring ModulePath() {
  HMODULE self = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<LPCWSTR>(&ModulePath), &self);
  constexpr std::size_t kLongestPath = 32768;  // UTF-16 units
  std::wstring path(kLongestPath, L'\0');
  path.resize(GetModuleFileNameW(self, path.data(), static_cast<DWORD>(path.size())));
  return path;
}

}  // namespace zel
