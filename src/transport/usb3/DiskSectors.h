#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>

#include "platform/ComponentTypes.h"
#include "transport/SectorDevice.h"

/// The sectors by which a disk-style camera is driven, and what stands in them.
namespace zel {

// Byte positions on the drive.
constexpr std::uint64_t kDiskStatusPosition = 0x20000;
constexpr std::uint64_t kDiskCommandPosition = 0x20200;
constexpr std::uint64_t kDiskImagePosition = 0x20400;

// Bytes of the status sector; it begins with the maker's signature.
constexpr std::size_t kDiskModelCodeLow = 26;
constexpr std::size_t kDiskModelCodeHigh = 27;
constexpr std::size_t kDiskIdentityLow = 28;
constexpr std::size_t kDiskIdentityHigh = 29;
constexpr std::size_t kDiskFrameReady = 256;  ///< 1: a frame can be read
constexpr std::size_t kDiskReadBack = 257;    ///< answer of the last register read

enum class DiskCommand : std::uint8_t { PrepareCapture = 0x10, RegisterWrite = 0x20, RegisterRead = 0x21 };

/// The command, its arguments, zeros.
Sector DiskCommandSector(DiskCommand command, std::initializer_list<std::uint8_t> arguments = {});

/// "\\.\PhysicalDriveN".
std::u16string DiskPath(LONG drive);

/// The status sector; false when it can't be read.
bool ReadDiskStatus(SectorDevice& disk, Sector& status);
/// Whether a status sector is one of a camera.
bool HasDiskSignature(const Sector& status);

}  // namespace zel
