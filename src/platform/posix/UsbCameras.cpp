#include "platform/posix/UsbCameras.h"

#include <algorithm>
#include <charconv>
#include <cstddef>

#include "platform/Text.h"

namespace zel {
namespace {

constexpr UsbId kPipeCameraIds[] = {
    {0x12C1, 0x02C0},  // as the controller's boot header has it
    {0x12C1, 0x0248},  // after `ChangePIDtoDS`
};
constexpr UsbId kFx3CameraIds[] = {
    {0x04B4, 0x00F1},  // the controller maker's default
};

constexpr std::u16string_view kDevicePrefix = u"\\\\.\\";
constexpr std::string_view kInterfacePrefix = "usb:";
constexpr unsigned kMaxIndex = 31;  // devices of a type

/// The whole of a text as a number up to `limit`.
std::optional<unsigned> ParseNumber(std::string_view text, unsigned limit, int base = 10) {
  unsigned number = 0;
  const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number, base);
  if (parsed.ec != std::errc() || parsed.ptr != text.data() + text.size() || number > limit) return {};
  return number;
}

/// The parts of a text between separators. An empty text has none.
std::vector<std::string_view> Split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(separator), text.size());
    parts.push_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return parts;
}

struct CameraName {
  std::string type;  ///< "ZELUSBBD"
  unsigned index = 0;
  bool operator==(const CameraName&) const = default;
};

std::optional<CameraName> ParseCameraName(std::string_view name) {
  constexpr std::size_t kTypeLength = 8;
  CameraName camera{.type = std::string(name.substr(0, kTypeLength))};
  for (char& c : camera.type) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  const bool family = camera.type.starts_with("ZELUSB") || camera.type.starts_with("ZELWOM");
  const auto isDigit = [](char c) { return c >= 'A' && c <= 'J'; };
  if (!family || name.size() < kTypeLength + 2 || name[kTypeLength] != '-' || !isDigit(camera.type[6]) ||
      !isDigit(camera.type[7]))
    return {};
  const auto index = ParseNumber(name.substr(kTypeLength + 1), kMaxIndex);
  if (!index) return {};
  camera.index = *index;
  return camera;
}

std::optional<CameraName> CameraOfPath(std::u16string_view path) {
  if (!path.starts_with(kDevicePrefix)) return {};
  return ParseCameraName(ToUtf8(path.substr(kDevicePrefix.size())));
}

std::string Unreadable(std::string_view entry, std::string_view list, std::string_view form) {
  std::string text = "'";
  text.append(entry).append("' at position ").append(std::to_string(entry.data() - list.data()));
  return text.append(" is not of the form ").append(form);
}

}  // namespace

const GUID kFx3InterfaceClass = {
    0x328184C5, 0x93E6, 0x49B7, {0x94, 0xB8, 0x2A, 0xDA, 0x13, 0xAA, 0xBB, 0x39}};

std::span<const UsbId> PipeCameraIds() {
  return kPipeCameraIds;
}

std::span<const UsbId> Fx3CameraIds() {
  return kFx3CameraIds;
}

std::string ToText(const UsbLocation& location) {
  std::string text = std::to_string(location.bus);
  for (std::size_t n = 0; n < location.ports.size() && location.ports[n] != 0; ++n)
    text.append(n == 0 ? "-" : ".").append(std::to_string(location.ports[n]));
  return text;
}

std::optional<UsbLocation> ParseUsbLocation(std::string_view text) {
  const std::size_t dash = text.find('-');
  if (dash == std::string_view::npos || text.ends_with('.')) return {};
  const auto bus = ParseNumber(text.substr(0, dash), 0xFFFF);
  const std::vector<std::string_view> ports = Split(text.substr(dash + 1), '.');
  UsbLocation location{.bus = static_cast<int>(bus.value_or(0))};
  if (location.bus == 0 || ports.empty() || ports.size() > location.ports.size()) return {};
  for (std::size_t n = 0; n < ports.size(); ++n) {
    location.ports[n] = static_cast<std::uint8_t>(ParseNumber(ports[n], 0xFF).value_or(0));
    if (location.ports[n] == 0) return {};
  }
  return location;
}

std::u16string UsbInterfacePath(const UsbLocation& location) {
  return ToUtf16(std::string(kInterfacePrefix) + ToText(location));
}

std::optional<UsbLocation> ParseUsbInterfacePath(std::u16string_view path) {
  const std::string text = ToUtf8(path);
  if (!text.starts_with(kInterfacePrefix)) return {};
  return ParseUsbLocation(std::string_view(text).substr(kInterfacePrefix.size()));
}

bool IsPipeCameraPath(std::u16string_view path) {
  return CameraOfPath(path).has_value();
}

UsbLookup FindPipeCamera(std::u16string_view path, const char* mappings,
                         std::span<const UsbLocation> present) {
  const std::optional<CameraName> wanted = CameraOfPath(path);
  if (!wanted) return {};
  const std::string_view list = mappings ? mappings : "";
  std::vector<UsbLocation> left(present.begin(), present.end());
  std::optional<UsbLocation> named;
  for (const std::string_view entry : Split(list, ',')) {
    const std::size_t equals = std::min(entry.find('='), entry.size());
    const auto camera = ParseCameraName(entry.substr(0, equals));
    const auto location = ParseUsbLocation(entry.substr(std::min(equals + 1, entry.size())));
    if (!camera || !location) return {{}, Unreadable(entry, list, "ZelUsbXX-N=BUS-PORT[.PORT...]")};
    if (*camera == *wanted && !named) named = location;
    std::erase(left, *location);
  }
  if (named) {
    if (std::ranges::find(present, *named) == present.end()) return {};
    return {named, {}};
  }
  if (wanted->index >= left.size()) return {};
  return {left[wanted->index], {}};
}

UsbIdList ParseUsbIds(std::string_view text) {
  UsbIdList list;
  for (const std::string_view entry : Split(text, ',')) {
    constexpr std::size_t kDigits = 4;
    const bool shaped = entry.size() == 2 * kDigits + 1 && entry[kDigits] == ':';
    const auto vendor = ParseNumber(entry.substr(0, kDigits), 0xFFFF, 16);
    const auto product =
        shaped ? ParseNumber(entry.substr(kDigits + 1), 0xFFFF, 16) : std::optional<unsigned>();
    if (!vendor || !product) return {{}, Unreadable(entry, text, "vvvv:pppp")};
    list.ids.push_back({static_cast<std::uint16_t>(*vendor), static_cast<std::uint16_t>(*product)});
  }
  return list;
}

}  // namespace zel
