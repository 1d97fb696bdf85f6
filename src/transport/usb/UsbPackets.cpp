#include "transport/usb/UsbPackets.h"

#include <algorithm>

#include "common/BytePacking.h"

namespace zel {

UsbPacket MakePacket(UsbCommand command, std::span<const std::uint8_t> arguments) {
  UsbPacket packet{};
  packet[0] = static_cast<std::uint8_t>(command);
  std::copy_n(arguments.begin(), std::min(arguments.size(), kUsbPacketBytes - 1), packet.begin() + 1);
  return packet;
}

UsbPacket MakePacket(UsbCommand command, std::initializer_list<std::uint8_t> arguments) {
  return MakePacket(command, std::span(arguments.begin(), arguments.size()));
}

UsbPacket FrameSizePacket(std::uint32_t pixels) {
  return MakePacket(UsbCommand::FrameSize,
                    {ByteOf(pixels, 0), ByteOf(pixels, 1), ByteOf(pixels, 2), ByteOf(pixels, 3)});
}

UsbPacket TransferModePacket(bool twoBytesPerSample) {
  return MakePacket(UsbCommand::TransferMode, {static_cast<std::uint8_t>(twoBytesPerSample)});
}

UsbPacket RegisterWritePacket(std::uint8_t address, std::uint16_t value) {
  return MakePacket(UsbCommand::RegisterWrite, {address, ByteOf(value, 1), ByteOf(value, 0)});
}

UsbPacket ByteRegisterWritePacket(std::uint8_t address, std::uint8_t value) {
  return MakePacket(UsbCommand::RegisterWrite, {address, value});
}

UsbPacket RegisterReadPacket(std::uint8_t address) {
  return MakePacket(UsbCommand::RegisterRead, {address});
}

UsbPacket WideRegisterWritePacket(std::uint16_t address, std::uint16_t value) {
  return MakePacket(UsbCommand::RegisterWrite,
                    {ByteOf(address, 1), ByteOf(address, 0), ByteOf(value, 1), ByteOf(value, 0)});
}

UsbPacket WideRegisterReadPacket(std::uint16_t address) {
  return MakePacket(UsbCommand::RegisterRead, {ByteOf(address, 1), ByteOf(address, 0)});
}

UsbPacket SerialRomWritePacket(std::uint8_t address, std::uint8_t value) {
  return MakePacket(UsbCommand::SerialRomWrite, {address, value});
}

UsbPacket SerialRomReadPacket(std::uint8_t address) {
  return MakePacket(UsbCommand::SerialRomRead, {address});
}

UsbPacket WideSerialRomWritePacket(std::uint16_t address, std::uint8_t value) {
  return MakePacket(UsbCommand::SerialRomWrite, {ByteOf(address, 1), ByteOf(address, 0), value});
}

UsbPacket WideSerialRomReadPacket(std::uint16_t address) {
  return MakePacket(UsbCommand::SerialRomRead, {ByteOf(address, 1), ByteOf(address, 0)});
}

UsbPacket HalfClockPacket(bool on) {
  return MakePacket(UsbCommand::SetHalfClock, {static_cast<std::uint8_t>(on)});
}

UsbPacket FpgaWritePacket(std::uint8_t address, std::uint16_t value) {
  return MakePacket(UsbCommand::FpgaWrite, {address, ByteOf(value, 0), ByteOf(value, 1)});
}

UsbPacket FpgaReadPacket(std::uint8_t address) {
  return MakePacket(UsbCommand::FpgaRead, {address});
}

UsbPacket PortPacket(std::uint32_t value) {
  return MakePacket(UsbCommand::SetPort, {static_cast<std::uint8_t>((value & 0x0C) * 8)});
}

void PutBlock(UsbPacket& packet, std::span<const std::uint8_t> data) {
  const std::size_t count = std::min(data.size(), kMaxBlockBytes);
  packet[0] = static_cast<std::uint8_t>(UsbCommand::BlockWrite);
  packet[1] = static_cast<std::uint8_t>(count);
  std::copy_n(data.begin(), count, packet.begin() + 2);
}

bool SendPacket(CUsbDevice& device, UsbPacket& packet) {
  return device.PipeWrite(UsbPipe::Command, packet);
}

bool QueryPacket(CUsbDevice& device, UsbPacket& packet, std::uint32_t settleMs) {
  if (!SendPacket(device, packet) || !device.PipeRead(UsbPipe::Reply, packet)) return false;
  if (settleMs != 0) CurrentDriverHost().Sleep(settleMs);
  return device.PipeRead(UsbPipe::Reply, packet);
}

}  // namespace zel
