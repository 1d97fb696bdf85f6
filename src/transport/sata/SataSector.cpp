#include "transport/sata/SataSector.h"

#include <limits>

#include "common/BytePacking.h"

namespace zel {
namespace {

// Bytes of the sector.
constexpr std::size_t kRequest = 34;
constexpr std::size_t kAddressLow = 36;
constexpr std::size_t kAddressHigh = 37;
constexpr std::size_t kValue0 = 38;
constexpr std::size_t kValue1 = 39;
constexpr std::size_t kReadBack0 = 40;
constexpr std::size_t kReadBack1 = 41;
constexpr std::size_t kRequestStatus = 42;
constexpr std::size_t kFrameReady = 44;
constexpr std::size_t kRun = 46;
constexpr std::size_t kOneByteSamples = 48;
constexpr std::size_t kByte2 = 50;  // of a value written or read back
constexpr std::size_t kByte3 = 51;
constexpr std::size_t kWidthLow = 64;
constexpr std::size_t kWidthHigh = 66;
constexpr std::size_t kHeightLow = 68;
constexpr std::size_t kHeightHigh = 70;
constexpr std::size_t kLeftLow = 72;
constexpr std::size_t kLeftHigh = 74;
constexpr std::size_t kTopLow = 76;
constexpr std::size_t kTopHigh = 78;
constexpr std::size_t kExternalTrigger = 80;
constexpr std::size_t kTransferBits = 96;  // a bit for each choice
constexpr std::size_t kAux = 98;           // switches that are off

constexpr std::uint8_t kWriteRequest = 1;
constexpr std::uint8_t kReadRequest = 2;

// Bits of the request status.
constexpr std::uint8_t kWriteBusy = 1;
constexpr std::uint8_t kWriteDone = 2;
constexpr std::uint8_t kReadBusy = 4;
constexpr std::uint8_t kReadDone = 8;
constexpr std::uint8_t kStatusBits = 0x0F;

SataProgress Progress(const Sector& sector, std::uint8_t done, std::uint8_t busy) {
  const std::uint8_t status = sector[kRequestStatus];
  if ((status & done) != 0) return SataProgress::Done;
  if ((status & busy) != 0) return SataProgress::Pending;
  return (status & kStatusBits) == 0 ? SataProgress::Failed : SataProgress::Pending;
}

void PutRequest(Sector& sector, std::uint8_t request, std::uint16_t address) {
  sector[kRequest] = request;
  sector[kAddressLow] = ByteOf(address, 0);
  sector[kAddressHigh] = ByteOf(address, 1);
}

}  // namespace

SataFrame LayOutSataFrame(LONG width, LONG height, bool twoBytes, bool packedColor) {
  if (width <= 0 || height <= 0) return {};
  const std::int64_t unit = twoBytes ? 4 : 8;
  const std::int64_t alignedWidth = RoundUp<std::int64_t>(width, unit);
  const std::int64_t alignedHeight = RoundUp<std::int64_t>(height, unit);
  // The sector tells either in 16 bits.
  if (alignedWidth > 0xFFFF || alignedHeight > 0xFFFF) return {};
  const std::int64_t pixels = alignedWidth * alignedHeight;
  const std::int64_t bytes = pixels * (packedColor ? 3 : twoBytes ? 2 : 1);
  const std::int64_t transfer = RoundUp<std::int64_t>(bytes, kSectorBytes);
  const std::int64_t padding = transfer - bytes;
  const std::int64_t total = (packedColor ? bytes : pixels * 2) + padding;
  if (total > std::numeric_limits<LONG>::max()) return {};
  return {.alignedWidth = static_cast<LONG>(alignedWidth),
          .alignedHeight = static_cast<LONG>(alignedHeight),
          .sectorCount = static_cast<LONG>(transfer / static_cast<std::int64_t>(kSectorBytes)),
          .padding = static_cast<LONG>(padding),
          .totalBytes = static_cast<LONG>(total)};
}

Sector SataSettingsSector(const SataSettings& settings, SataRun run) {
  Sector sector{};
  PutRun(sector, run);
  sector[kOneByteSamples] = !settings.twoBytes;
  sector[kWidthLow] = ByteOf(settings.alignedWidth, 0);
  sector[kWidthHigh] = ByteOf(settings.alignedWidth, 1);
  sector[kHeightLow] = ByteOf(settings.alignedHeight, 0);
  sector[kHeightHigh] = ByteOf(settings.alignedHeight, 1);
  sector[kLeftLow] = ByteOf(settings.left, 0);
  sector[kLeftHigh] = ByteOf(settings.left, 1);
  sector[kTopLow] = ByteOf(settings.top, 0);
  sector[kTopHigh] = ByteOf(settings.top, 1);
  sector[kExternalTrigger] = settings.externalTrigger;
  if (settings.transferBits >= 0 && settings.transferBits <= 3)
    sector[kTransferBits] = static_cast<std::uint8_t>(1 << settings.transferBits);
  sector[kAux] = static_cast<std::uint8_t>((settings.aux2 ? 0 : 1) | (settings.aux1 ? 0 : 2));
  return sector;
}

void PutRun(Sector& sector, SataRun run) {
  sector[kRun] = static_cast<std::uint8_t>(run);
}

void PutRegisterWrite(Sector& sector, std::uint8_t address, std::uint8_t high, std::uint8_t low) {
  PutRequest(sector, kWriteRequest, address);
  sector[kValue0] = low;
  sector[kValue1] = high;
}

void PutRegisterRead(Sector& sector, std::uint8_t address) {
  PutRequest(sector, kReadRequest, address);
}

void PutWideRegisterWrite(Sector& sector, std::uint16_t address, std::uint32_t value) {
  PutRequest(sector, kWriteRequest, address);
  sector[kValue0] = ByteOf(value, 0);
  sector[kValue1] = ByteOf(value, 1);
  sector[kByte2] = ByteOf(value, 2);
  sector[kByte3] = 0;
}

void PutWideRegisterRead(Sector& sector, std::uint16_t address) {
  PutRequest(sector, kReadRequest, address);
}

SataProgress RegisterWriteProgress(const Sector& sector) {
  return Progress(sector, kWriteDone, kWriteBusy);
}

SataProgress RegisterReadProgress(const Sector& sector) {
  return Progress(sector, kReadDone, kReadBusy);
}

std::uint32_t ReadBack(const Sector& sector) {
  return FromBytes16(sector[kReadBack0], sector[kReadBack1]) | std::uint32_t{sector[kByte2]} << 16;
}

SataReady FrameReady(const Sector& sector) {
  switch (sector[kFrameReady]) {
    case 1:
      return SataReady::AreaB;
    case 2:
      return SataReady::AreaA;
    default:
      return SataReady::None;
  }
}

void ClearFrameReady(Sector& sector) {
  sector[kFrameReady] = 0;
}

}  // namespace zel
