#pragma once

#include <cstdint>

#include "platform/ComponentTypes.h"
#include "transport/SectorDevice.h"

/// The sector of a SATA camera's volume that carries commands, settings and status, and how its frames lie in
/// the image areas.
namespace zel {

/// Sector numbers of a model's volume.
struct SataSectors {
  std::uint32_t command = 0;
  std::uint32_t areaA = 0;  ///< the areas take frames in turn
  std::uint32_t areaB = 0;
};

constexpr std::uint64_t SectorPosition(std::uint32_t sector) {
  return std::uint64_t{sector} * kSectorBytes;
}

enum class SataRun : std::uint8_t { Run = 1, Stop = 2 };

/// One frame, aligned as the controller wants it.
struct SataFrame {
  LONG alignedWidth = 0;  ///< pixels, multiples of 4 with two bytes per sample, of 8 with one
  LONG alignedHeight = 0;
  LONG sectorCount = 0;  ///< that are read for a frame
  LONG padding = 0;      ///< bytes of them behind the picture
  LONG totalBytes = 0;   ///< room for a frame at two bytes per sample
};

/// All zero for sizes that can't be read. `packedColor`: three bytes per pixel, whatever the sample size.
SataFrame LayOutSataFrame(LONG width, LONG height, bool twoBytes, bool packedColor);

/// What a settings sector tells the camera.
struct SataSettings {
  LONG alignedWidth = 0;
  LONG alignedHeight = 0;
  LONG left = 0;  ///< of the window; for controllers that cut it out themselves, 0 for all others
  LONG top = 0;
  bool twoBytes = false;
  bool externalTrigger = false;
  LONG transferBits = 0;  ///< 0..3
  bool aux1 = false;
  bool aux2 = false;
};
Sector SataSettingsSector(const SataSettings& settings, SataRun run);

// Requests are put into a sector that was read from the camera: what they do not name goes back as it came.
void PutRun(Sector& sector, SataRun run);
void PutRegisterWrite(Sector& sector, std::uint8_t address, std::uint8_t high, std::uint8_t low);
void PutRegisterRead(Sector& sector, std::uint8_t address);
/// Values have 22 bits on most cameras, `kWide24` on few.
constexpr std::uint32_t kWide22 = 0x3FFFFF;
constexpr std::uint32_t kWide24 = 0xFFFFFF;
void PutWideRegisterWrite(Sector& sector, std::uint16_t address, std::uint32_t value);
void PutWideRegisterRead(Sector& sector, std::uint16_t address);

enum class SataProgress { Pending, Done, Failed };
SataProgress RegisterWriteProgress(const Sector& sector);
SataProgress RegisterReadProgress(const Sector& sector);

/// What a register read found: bytes 0 and 1, and 2 of a wide one.
std::uint32_t ReadBack(const Sector& sector);

enum class SataReady { None, AreaA, AreaB };
SataReady FrameReady(const Sector& sector);
void ClearFrameReady(Sector& sector);

}  // namespace zel
