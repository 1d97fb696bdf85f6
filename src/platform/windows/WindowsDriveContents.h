#pragma once

#include <string>

#include "platform/DriveGuard.h"

namespace zel {

/// The file system that is mounted on a volume such as "E:", or on a volume of "PhysicalDrive2".
DriveContents ExamineWindowsDrive(const std::string& name);

}  // namespace zel
