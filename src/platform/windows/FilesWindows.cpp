#include <share.h>

#include <string>
#include <system_error>

#include "platform/Files.h"

namespace zel {

FilePtr OpenFile(const OLECHAR* path, const char* mode) {
  const std::wstring wideMode(mode, mode + std::char_traits<char>::length(mode));
  return FilePtr(_wfsopen(path, wideMode.c_str(), mode[0] == 'r' ? _SH_DENYNO : _SH_DENYRW));
}

FilePtr OpenFile(const std::filesystem::path& path, const char* mode) {
  return OpenFile(path.c_str(), mode);
}

std::filesystem::path DebugFolder() {
  return L"C:\\";
}

void RemoveFile(const OLECHAR* path) {
  const std::filesystem::path file(path);
  std::error_code ignored;
  if (std::filesystem::is_regular_file(file, ignored)) std::filesystem::remove(file, ignored);
}

}  // namespace zel
