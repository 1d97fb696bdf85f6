#include "platform/DriveName.h"

#include <algorithm>
#include <charconv>

#include "platform/Text.h"

namespace zel {
namespace {

constexpr std::u16string_view kDevicePrefix = u"\\\\.\\";
constexpr std::string_view kPhysicalDrive = "PhysicalDrive";

char LowerCase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

}  // namespace

std::optional<std::string> DriveNameOf(std::u16string_view path) {
  if (!path.starts_with(kDevicePrefix)) return std::nullopt;
  std::string name = ToUtf8(path.substr(kDevicePrefix.size()));
  return IsDriveName(name) ? std::optional(std::move(name)) : std::nullopt;
}

bool IsDriveName(std::string_view name) {
  const char letter = name.empty() ? '\0' : LowerCase(name[0]);
  return (name.size() == 2 && letter >= 'a' && letter <= 'z' && name[1] == ':') || PhysicalDriveNumber(name);
}

std::optional<unsigned> PhysicalDriveNumber(std::string_view name) {
  if (!IsSameDrive(name.substr(0, kPhysicalDrive.size()), kPhysicalDrive)) return std::nullopt;
  const char* const end = name.data() + name.size();
  unsigned number = 0;
  const auto parsed = std::from_chars(name.data() + kPhysicalDrive.size(), end, number);
  if (parsed.ec != std::errc() || parsed.ptr != end) return std::nullopt;
  return number;
}

bool IsSameDrive(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, LowerCase, LowerCase);
}

bool ListsDrive(std::string_view list, std::string_view name) {
  for (std::size_t at = 0; at < list.size();) {
    const std::string_view entry = list.substr(at, list.find(',', at) - at);
    std::string listed(Trimmed(entry));
    if (listed.size() == 1) listed += ':';
    if (IsSameDrive(listed, name)) return true;
    at += entry.size() + 1;
  }
  return false;
}

}  // namespace zel
