#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/DriverHost.h"

/// The USB side of the Linux host. `problem` gets what the user should hear: a variable that can't be read, a
/// camera that he has no right to open; it stays empty otherwise.
namespace zel {

bool IsUsbCameraPath(std::u16string_view path);

/// Null when that failed, with the reason in `error`.
std::unique_ptr<DriverHandle> OpenUsbCamera(std::u16string_view path, DriverError* error,
                                            std::string* problem);

/// Path of the n-th camera behind an FX3 controller, or nothing; other interface classes have none.
std::optional<std::u16string> FindUsbInterface(const GUID& interfaceClass, std::uint32_t index,
                                               std::string* problem);

}  // namespace zel
