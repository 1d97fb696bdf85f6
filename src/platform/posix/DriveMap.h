#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zel {

/// Where drive paths lead on a system that names its disks otherwise.
struct DriveLookup {
  std::optional<std::string> file;  ///< nothing when there is no such drive
  bool mayWrite = false;            ///< whatever is on it: the mapping ends in "!"
  std::string problem;              ///< what can't be read in the mappings, and where; then there is no file
};

/// The file behind a drive such as "PhysicalDrive2" or "E:". `mappings` (may be null) is a list such as
/// "PhysicalDrive2=/dev/sdc,E:=/dev/sdd!"; a physical drive that it does not name is the N-th, from 0, of the
/// whole disks "sda", "sdb", ... in the folder `blockFolder`; a letter that it does not name is no drive.
DriveLookup FindDrive(std::string_view name, const char* mappings, const std::string& blockFolder);

}  // namespace zel
