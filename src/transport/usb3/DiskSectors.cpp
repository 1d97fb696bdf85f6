#include "transport/usb3/DiskSectors.h"

#include <algorithm>
#include <string_view>

#include "platform/Text.h"

namespace zel {
namespace {

constexpr std::string_view kSignature = "ORVANE";

}  // namespace

Sector DiskCommandSector(DiskCommand command, std::initializer_list<std::uint8_t> arguments) {
  Sector sector{};
  sector[0] = static_cast<std::uint8_t>(command);
  std::copy(arguments.begin(), arguments.end(), sector.begin() + 1);
  return sector;
}

std::u16string DiskPath(LONG drive) {
  return u"\\\\.\\PhysicalDrive" + ToUtf16(std::to_string(drive));
}

bool ReadDiskStatus(SectorDevice& disk, Sector& status) {
  return disk.ReadSectorAt(kDiskStatusPosition, status);
}

bool HasDiskSignature(const Sector& status) {
  return std::equal(kSignature.begin(), kSignature.end(), status.begin());
}

}  // namespace zel
