#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ComponentTypes.h"

/// Which devices on the USB are cameras, and which of them a driver path means. On Windows the installed
/// drivers know; here it follows from identifiers, from where a device is plugged in, and from the
/// environment.
namespace zel {

struct UsbId {
  std::uint16_t vendor = 0, product = 0;
  bool operator==(const UsbId&) const = default;
};

/// Cameras with a command, a reply and an image pipe, and cameras behind an FX3 controller.
std::span<const UsbId> PipeCameraIds();
std::span<const UsbId> Fx3CameraIds();

/// Device interface class of the controller's Windows driver.
extern const GUID kFx3InterfaceClass;

/// Where a device is plugged in: bus, then the port at each hub from the root on, then zeros. The order is
/// that in which cameras are counted.
struct UsbLocation {
  int bus = 0;
  std::array<std::uint8_t, 7> ports{};
  auto operator<=>(const UsbLocation&) const = default;
};

/// As the kernel writes it: "1-2.3".
std::string ToText(const UsbLocation& location);
std::optional<UsbLocation> ParseUsbLocation(std::string_view text);

/// "usb:1-2.3", the interface path of a camera; good as long as it stays plugged in there.
std::u16string UsbInterfacePath(const UsbLocation& location);
std::optional<UsbLocation> ParseUsbInterfacePath(std::u16string_view path);

/// True for "\\.\ZelUsbXX-n" and "\\.\ZelWomXX-n", XX being a camera type in the letters A = 0 to J = 9.
bool IsPipeCameraPath(std::u16string_view path);

struct UsbLookup {
  std::optional<UsbLocation> location;  ///< nothing when there is no such camera
  std::string problem;                  ///< what can't be read in the mappings, and where
};

/// The camera behind such a path. `mappings` (may be null) is a list such as
/// "ZelUsbBD-0=1-2.3,ZelWomGH-0=2-1". A device does not tell its camera type: what a name that is not in the
/// list means is the n-th, from 0, of the `present` devices that the list leaves over. Names in upper or
/// lower case; `present` in order.
UsbLookup FindPipeCamera(std::u16string_view path, const char* mappings,
                         std::span<const UsbLocation> present);

struct UsbIdList {
  std::vector<UsbId> ids;
  std::string problem;  ///< what can't be read, and where; then there are no ids
};

/// "04b4:00f1,1234:abcd", in hexadecimal digits.
UsbIdList ParseUsbIds(std::string_view text);

}  // namespace zel
