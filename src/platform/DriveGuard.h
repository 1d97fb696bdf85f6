#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/DriverHost.h"

/// Cameras that the system shows as disks and volumes are set by writing sectors, and nothing in the SATA
/// protocol tells a camera from a disk: a wrong drive name would cost somebody his data. What the system
/// recognises on a drive is the sign that it is no camera.
namespace zel {

/// What the system knows about a drive.
struct DriveContents {
  std::vector<std::string>
      signs;                ///< "holds a file system (ext4)", "is mounted at /home", ...; no camera has any
  std::string unreadable;   ///< why it could not be examined, or not to the end; or empty
  bool runsSystem = false;  ///< the running system lives there: nothing allows writing
};

struct DrivePermission {
  std::string drive;    ///< as the user knows it: "E: (/dev/sdd)"
  std::string setting;  ///< that allows writing to it: "ZELCAM_DRIVES=E:=/dev/sdd!"
  bool given = false;
};

/// Why nothing is written to the drive, in a sentence that names it and says how to allow it; empty: go
/// ahead. A drive that could not be examined may hold anything.
std::string WriteRefusalOf(const DriveContents& contents, const DrivePermission& permission);

/// The drive, with writes that are answered WriteProtect when `refusal` gives a reason. It is asked once,
/// before the first write; reading needs no permission.
std::unique_ptr<DriverHandle> GuardWrites(std::unique_ptr<DriverHandle> drive,
                                          std::function<std::string()> refusal);

}  // namespace zel
