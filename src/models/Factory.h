#pragma once

#include <cstdint>

namespace zel {

class CZELDevice;

/// A new closed camera of the type, owned by the caller; null for a type that does not exist or is not part
/// of this build, and when memory is short.
CZELDevice* CreateDeviceForType(std::uint32_t type);

}  // namespace zel
