#pragma once

#include <string>
#include <string_view>

#include "device/DeviceAvailability.h"
#include "platform/Text.h"

/// What transports with numbered driver devices have in common when they open a camera.
namespace zel {

constexpr bool IsDriverIndex(LONG index) {
  return index >= 0 && index < kDeviceIndexes;
}

/// "\\.\NAME-INDEX".
inline std::u16string DriverPath(const OLECHAR* driverName, LONG index) {
  std::u16string path = u"\\\\.\\";
  for (; *driverName != 0; ++driverName) path += static_cast<char16_t>(*driverName);
  return path + u'-' + ToUtf16(std::to_string(index));
}

/// Shown when the reset of a camera that is being opened ends in an exception.
constexpr std::u16string_view kResetFailed =
    u"Send Reset Command to USB Device failed!\nCOrvaneUSBCaptureImpl::ResetCamera";

}  // namespace zel
