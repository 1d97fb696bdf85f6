#include <system_error>

#include "platform/Files.h"
#include "platform/Text.h"

namespace zel {

FilePtr OpenFile(const OLECHAR* path, const char* mode) {
  return FilePtr(std::fopen(ToUtf8(path).c_str(), mode));
}

FilePtr OpenFile(const std::filesystem::path& path, const char* mode) {
  return FilePtr(std::fopen(path.c_str(), mode));
}

std::filesystem::path DebugFolder() {
  std::error_code unknown;
  const std::filesystem::path folder = std::filesystem::temp_directory_path(unknown);
  return unknown ? "/tmp" : folder;
}

void RemoveFile(const OLECHAR* path) {
  const std::filesystem::path file(ToUtf8(path));
  std::error_code ignored;
  if (std::filesystem::is_regular_file(file, ignored)) std::filesystem::remove(file, ignored);
}

}  // namespace zel
