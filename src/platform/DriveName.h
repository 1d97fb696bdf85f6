#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zel {

/// "E:" or "PhysicalDrive2", as written, from "\\.\E:" and the like; nothing for paths of other devices.
std::optional<std::string> DriveNameOf(std::u16string_view path);

/// Whether it is a letter with a colon or PhysicalDrive with a number, in upper or lower case.
bool IsDriveName(std::string_view name);

/// N of "PhysicalDriveN".
std::optional<unsigned> PhysicalDriveNumber(std::string_view name);

/// Whether two drive names are the same but for upper and lower case.
bool IsSameDrive(std::string_view a, std::string_view b);

/// Whether a list such as "E,PhysicalDrive2" has the drive; a letter may have its colon, and blanks don't
/// count.
bool ListsDrive(std::string_view list, std::string_view name);

}  // namespace zel
