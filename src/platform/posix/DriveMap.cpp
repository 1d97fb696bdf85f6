#include "platform/posix/DriveMap.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <vector>

#include "platform/DriveName.h"

namespace zel {
namespace {

/// The disks in the order in which the system names them: sda to sdz, then sdaa.
std::vector<std::string> WholeDisks(const std::string& blockFolder) {
  std::vector<std::string> names;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(blockFolder, error)) {
    std::string name = entry.path().filename().string();
    if (name.starts_with("sd")) names.push_back(std::move(name));
  }
  std::ranges::sort(names, [](const std::string& a, const std::string& b) {
    return a.size() != b.size() ? a.size() < b.size() : a < b;
  });
  return names;
}

}  // namespace

DriveLookup FindDrive(std::string_view wanted, const char* mappings, const std::string& blockFolder) {
  const std::string_view list = mappings ? mappings : "";
  DriveLookup found;
  for (std::size_t at = 0; at < list.size();) {
    const std::string_view entry = list.substr(at, list.find(',', at) - at);
    const std::size_t equals = entry.find('=');
    const std::string_view name = entry.substr(0, equals);
    std::string_view file = equals == std::string_view::npos ? "" : entry.substr(equals + 1);
    const bool mayWrite = file.ends_with('!');
    if (mayWrite) file.remove_suffix(1);
    if (file.empty() || !IsDriveName(name)) {
      DriveLookup unreadable;
      unreadable.problem.append("'").append(entry).append("' at position ").append(std::to_string(at));
      unreadable.problem.append(" is not of the form PhysicalDriveN=FILE or X:=FILE");
      return unreadable;
    }
    if (IsSameDrive(name, wanted) && !found.file) {
      found.file = file;
      found.mayWrite = mayWrite;
    }
    at += entry.size() + 1;
  }
  if (found.file) return found;

  const std::optional<unsigned> number = PhysicalDriveNumber(wanted);
  const std::vector<std::string> disks = number ? WholeDisks(blockFolder) : std::vector<std::string>();
  if (number && *number < disks.size()) found.file = "/dev/" + disks[*number];
  return found;
}

}  // namespace zel
