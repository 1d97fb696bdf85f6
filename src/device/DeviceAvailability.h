#pragma once

#include "platform/ComponentTypes.h"

/// Which cameras this process has open: one flag per camera type (0..98) and device index (0..31). Any
/// thread. A pair outside the table is never free.
namespace zel {

constexpr LONG kDeviceTypes = 99;
constexpr LONG kDeviceIndexes = 32;

bool IsDeviceFree(LONG type, LONG index);
/// Takes the device; false when it is taken already.
bool ClaimDevice(LONG type, LONG index);
void ReleaseDevice(LONG type, LONG index);

}  // namespace zel
