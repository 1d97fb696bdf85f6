#pragma once

#include <optional>

#include "platform/ComponentTypes.h"
#include "transport/SectorDevice.h"

namespace zel {

constexpr LONG kUnknownCameraType = 99;

/// The type of the disk-style camera at physical drive `drive` (from 0), or 99 when there is none, it may not
/// be opened, it is an ordinary disk, or its model code is unknown. Reads one sector.
LONG IdentifyDiskCamera(LONG drive);

/// The type whose model code a camera's status sector shows, or 99. Says nothing of a sector without
/// signature.
LONG DiskCameraType(const Sector& status);

}  // namespace zel
