#pragma once

#include <memory>

#include "platform/DriverHost.h"
#include "platform/windows/UniqueHandle.h"

namespace zel {

/// The nearest of the errors that the seam knows, for a Win32 error number.
DriverError WindowsDriverError(DWORD number);

/// An open file, pipe or device as the seam shows it.
std::unique_ptr<DriverHandle> MakeWindowsDriverHandle(UniqueHandle device);

}  // namespace zel
