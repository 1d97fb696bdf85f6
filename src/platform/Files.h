#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>

#include "platform/ComponentTypes.h"

namespace zel {

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

/// `std::fopen` for names in any script. A file opened for writing is shared with nobody on Windows. Null
/// when it cannot be opened or a name is not proper UTF-16.
FilePtr OpenFile(const OLECHAR* path, const char* mode);
FilePtr OpenFile(const std::filesystem::path& path, const char* mode);

/// Where logs for support go: the root of drive C: on Windows, the temporary folder elsewhere.
std::filesystem::path DebugFolder();

/// Removes a regular file if there is one; leaves directories and devices alone.
void RemoveFile(const OLECHAR* path);

}  // namespace zel
