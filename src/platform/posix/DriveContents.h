#pragma once

#include <sys/types.h>

#include <string>

#include "platform/DriveGuard.h"

namespace zel {

/// What lies on an open disk, volume or plain file, and what the system does with it. `file` is a descriptor;
/// its position stays.
DriveContents ExamineDrive(int file);

/// Where the system tells what it does with its block devices.
struct SystemTables {
  std::string mounts = "/proc/self/mountinfo";
  std::string devices = "/sys/dev/block";
};

/// Adds the uses of a block device, and of its partitions, to what is known about it. Swap space has a
/// signature.
void AddUses(dev_t device, const SystemTables& tables, DriveContents* contents);

}  // namespace zel
