#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>

#include "platform/posix/DriveContents.h"

namespace zel {
namespace {

namespace fs = std::filesystem;

std::string NumberText(dev_t device) {
  return std::to_string(major(device)) + ':' + std::to_string(minor(device));
}

/// "8:17" of the block device that a path names; empty when it names none.
std::string NumberOf(const std::string& path) {
  struct stat about;
  // Only there, as a look at a server that is gone may wait for ever.
  return path.starts_with("/dev/") && stat(path.c_str(), &about) == 0 && S_ISBLK(about.st_mode)
             ? NumberText(about.st_rdev)
             : "";
}

/// The kernel writes blanks and the like in paths as a backslash and three octal digits.
std::string Unescaped(const std::string& text) {
  std::string plain;
  for (std::size_t n = 0; n < text.size(); ++n) {
    const bool escaped = text[n] == '\\' && n + 3 < text.size();
    plain += escaped
                 ? static_cast<char>((text[n + 1] - '0') * 64 + (text[n + 2] - '0') * 8 + text[n + 3] - '0')
                 : text[n];
    if (escaped) n += 3;
  }
  return plain;
}

/// A device, its partitions, and what the system has built upon them: volume groups, RAID, decrypted volumes.
struct Devices {
  std::vector<std::string> numbers;
  std::vector<std::string> builtUpon;

  bool Have(const std::string& number) const { return std::ranges::find(numbers, number) != numbers.end(); }
};

void Collect(const fs::path& device, Devices* devices) {
  std::string number;
  if (std::ifstream file(device / "dev"); std::getline(file, number)) devices->numbers.push_back(number);
  std::error_code none;
  for (const auto& entry : fs::directory_iterator(device, none))
    if (fs::exists(entry.path() / "partition", none)) Collect(entry, devices);
  for (const auto& holder : fs::directory_iterator(device / "holders", none)) {
    devices->builtUpon.push_back(holder.path().filename().string());
    Collect(holder, devices);
  }
}

void AddMounts(const Devices& devices, const std::string& table, DriveContents* contents) {
  std::ifstream lines(table);
  bool first = true;  // one of the places is enough to know it again
  for (std::string line; std::getline(lines, line);) {
    std::istringstream fields(line);
    std::string id, parent, number, root, place, field, type, source;
    fields >> id >> parent >> number >> root >> place;
    while (fields >> field && field != "-") {
    }
    fields >> type >> source;
    // Some file systems stand under a number of their own, and only their source tells the device.
    if (!devices.Have(number) && !devices.Have(NumberOf(Unescaped(source)))) continue;
    place = Unescaped(place);
    if (std::exchange(first, false)) contents->signs.push_back("is mounted at " + place);
    contents->runsSystem |= place == "/";
  }
}

}  // namespace

void AddUses(dev_t device, const SystemTables& tables, DriveContents* contents) {
  Devices devices{{NumberText(device)}, {}};
  Collect(fs::path(tables.devices) / NumberText(device), &devices);
  AddMounts(devices, tables.mounts, contents);
  for (const std::string& name : devices.builtUpon) contents->signs.push_back("is in use by " + name);
}

}  // namespace zel
