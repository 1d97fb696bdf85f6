#include "platform/posix/DriveMap.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <filesystem>
#include <vector>

#include "platform/Text.h"

namespace zel {
namespace {

constexpr std::u16string_view kDevicePrefix = u"\\\\.\\";
constexpr std::string_view kPhysicalDrive = "PHYSICALDRIVE";

std::string UpperCase(std::string_view text) {
  std::string upper(text);
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return upper;
}

std::optional<unsigned> PhysicalDriveNumber(std::string_view upperName) {
  if (!upperName.starts_with(kPhysicalDrive)) return std::nullopt;
  const char* const end = upperName.data() + upperName.size();
  unsigned number = 0;
  const auto parsed = std::from_chars(upperName.data() + kPhysicalDrive.size(), end, number);
  if (parsed.ec != std::errc() || parsed.ptr != end) return std::nullopt;
  return number;
}

bool IsDriveName(std::string_view upperName) {
  const bool letter =
      upperName.size() == 2 && upperName[0] >= 'A' && upperName[0] <= 'Z' && upperName[1] == ':';
  return letter || PhysicalDriveNumber(upperName);
}

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

DriveLookup FindDrive(std::u16string_view path, const char* mappings, const std::string& blockFolder) {
  if (!path.starts_with(kDevicePrefix)) return {};
  const std::string wanted = UpperCase(ToUtf8(path.substr(kDevicePrefix.size())));
  if (!IsDriveName(wanted)) return {};

  const std::string_view list = mappings ? mappings : "";
  DriveLookup found;
  for (std::size_t at = 0; at < list.size();) {
    const std::string_view entry = list.substr(at, list.find(',', at) - at);
    const std::size_t equals = entry.find('=');
    const std::string name = UpperCase(entry.substr(0, equals));
    if (equals == std::string_view::npos || equals + 1 == entry.size() || !IsDriveName(name)) {
      DriveLookup unreadable;
      unreadable.problem.append("'").append(entry).append("' at position ").append(std::to_string(at));
      unreadable.problem.append(" is not of the form PhysicalDriveN=FILE or X:=FILE");
      return unreadable;
    }
    if (name == wanted && !found.file) found.file = entry.substr(equals + 1);
    at += entry.size() + 1;
  }
  if (found.file) return found;

  const std::optional<unsigned> number = PhysicalDriveNumber(wanted);
  const std::vector<std::string> disks = number ? WholeDisks(blockFolder) : std::vector<std::string>();
  if (number && *number < disks.size()) found.file = "/dev/" + disks[*number];
  return found;
}

}  // namespace zel
