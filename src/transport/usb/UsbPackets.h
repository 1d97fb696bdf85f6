#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <span>

#include "transport/usb/CUsbDevice.h"

/// The command packets that USB cameras understand, in one place. A packet is 64 bytes on the command pipe:
/// the code, its arguments, zeros. Replies are packets of the same size on the reply pipe.
namespace zel {

constexpr std::size_t kUsbPacketBytes = 64;
using UsbPacket = std::array<std::uint8_t, kUsbPacketBytes>;

enum class UsbCommand : std::uint8_t {
  StartFrame = 0x02,
  RegisterWrite = 0x04,
  Reset = 0x06,
  FrameSize = 0x09,
  TransferMode = 0x0A,
  RegisterRead = 0x0C,
  SerialRomWrite = 0x20,
  SerialRomRead = 0x21,
  SetHalfClock = 0x23,
  GetHalfClock = 0x24,
  FpgaWrite = 0x25,
  FpgaRead = 0x26,
  BlockWrite = 0x27,
  SetPort = 0x28,
  GetPort = 0x29,
};

constexpr std::size_t kMaxRegisterBytes = kUsbPacketBytes - 1;
constexpr std::size_t kMaxBlockBytes = 60;

/// Any command with its argument bytes; arguments beyond the packet are dropped.
UsbPacket MakePacket(UsbCommand command, std::span<const std::uint8_t> arguments);
UsbPacket MakePacket(UsbCommand command, std::initializer_list<std::uint8_t> arguments = {});

UsbPacket FrameSizePacket(std::uint32_t pixels);
UsbPacket TransferModePacket(bool twoBytesPerSample);

// Sensor registers: values travel high byte first, also the address where it has two bytes.
UsbPacket RegisterWritePacket(std::uint8_t address, std::uint16_t value);
UsbPacket ByteRegisterWritePacket(std::uint8_t address, std::uint8_t value);
UsbPacket RegisterReadPacket(std::uint8_t address);
UsbPacket WideRegisterWritePacket(std::uint16_t address, std::uint16_t value);
UsbPacket WideRegisterReadPacket(std::uint16_t address);

UsbPacket SerialRomWritePacket(std::uint8_t address, std::uint8_t value);
UsbPacket SerialRomReadPacket(std::uint8_t address);
// ROMs beyond 256 bytes: the address travels high byte first.
UsbPacket WideSerialRomWritePacket(std::uint16_t address, std::uint8_t value);
UsbPacket WideSerialRomReadPacket(std::uint16_t address);
UsbPacket HalfClockPacket(bool on);
UsbPacket FpgaWritePacket(std::uint8_t address, std::uint16_t value);
UsbPacket FpgaReadPacket(std::uint8_t address);
/// The outputs are bits 2 and 3 of the value; the other bits do not travel.
UsbPacket PortPacket(std::uint32_t value);

/// A block write goes into an existing packet and leaves its bytes beyond the block as they are.
void PutBlock(UsbPacket& packet, std::span<const std::uint8_t> data);

/// True when the driver took the whole packet.
bool SendPacket(CUsbDevice& device, UsbPacket& packet);

/// Sends the packet and replaces it by the camera's reply. The camera answers every query twice; the second
/// packet is the one that holds. `settleMs` is waited between the two.
bool QueryPacket(CUsbDevice& device, UsbPacket& packet, std::uint32_t settleMs = 0);

}  // namespace zel
