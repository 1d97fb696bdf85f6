#include "transport/usb3/DiskIdentification.h"

#include <algorithm>
#include <iterator>

#include "transport/usb3/DiskSectors.h"

namespace zel {
namespace {

struct ModelCode {
  std::uint8_t low;
  std::uint8_t high;
  LONG type;
};

constexpr ModelCode kModelCodes[] = {
    {0x70, 2, 44}, {0x50, 2, 45}, {0xC0, 2, 47}, {0x70, 5, 49}, {0xE0, 2, 50}, {0x30, 6, 52}, {0x00, 3, 53},
    {0x40, 6, 54}, {0x50, 6, 55}, {0x60, 6, 58}, {0x40, 5, 60}, {0x80, 6, 61}, {0x90, 6, 62}, {0xC0, 6, 75},
    {0xD0, 6, 76}, {0xE0, 6, 78}, {0xF0, 6, 79}, {0x90, 7, 80}, {0x00, 7, 81}, {0x30, 7, 83},
};

}  // namespace

LONG IdentifyDiskCamera(LONG drive) {
  SectorDevice disk;
  Sector status{};
  if (drive < 0 || !disk.Open(DiskPath(drive), kShareRead)) return kUnknownCameraType;
  if (!ReadDiskStatus(disk, status) || !HasDiskSignature(status)) return kUnknownCameraType;
  return DiskCameraType(status);
}

LONG DiskCameraType(const Sector& status) {
  const auto* const code =
      std::find_if(std::begin(kModelCodes), std::end(kModelCodes), [&](const ModelCode& row) {
        return row.low == status[kDiskModelCodeLow] && row.high == status[kDiskModelCodeHigh];
      });
  return code == std::end(kModelCodes) ? kUnknownCameraType : code->type;
}

}  // namespace zel
