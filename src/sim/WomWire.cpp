#include "sim/WomWire.h"

#include "common/BytePacking.h"

namespace zel {
namespace {

constexpr std::uint8_t kHighRomPage = 0x1F;

constexpr std::uint8_t kHighestSizeRegister = 3;  // 0..3: transfer size, lowest byte first
constexpr std::uint8_t kTransferMode = 14;
constexpr std::uint8_t kHalfClock = 15;
constexpr std::uint8_t kMark = 128;
constexpr std::uint8_t kMarkOfThisCamera = 0x5A;

}  // namespace

std::optional<std::size_t> WomWire::CommandLength(std::uint8_t code) const {
  switch (code) {
    case 0x20:
      return 4;
    case 0x21:
    case 0x25:
      return 3;
    // These settings belong to the FPGA here.
    case 0x09:
    case 0x23:
    case 0x24:
      return {};
    default:
      return UsbWire::CommandLength(code);
  }
}

DriverResult WomWire::SetTransferMode(const Packet& packet) {
  if (packet[1] > 1) return Refuse(DriverError::GeneralFailure, "transfer mode beyond 1");
  passesSamples_ = packet[1] == 1;
  return Accept();  // the FPGA decides about the sample size
}

DriverResult WomWire::WriteRom(const Packet& packet) {
  if (packet[1] == kHighRomPage) return ProgramRom(&highRom_[packet[2]], packet[3]);
  if (packet[3] != 0) return Refuse(DriverError::GeneralFailure, "serial-ROM write outside the ROM");
  return UsbWire::WriteRom(packet);
}

DriverResult WomWire::ReadRom(const Packet& packet) {
  if (packet[1] == kHighRomPage) return Reply({RomByte(highRom_[packet[2]])});
  if (packet[2] != 0) return Refuse(DriverError::GeneralFailure, "serial-ROM read outside the ROM");
  return UsbWire::ReadRom(packet);
}

DriverResult WomWire::WriteFpga(const Packet& packet) {
  const std::uint8_t address = packet[1];
  const std::uint8_t value = packet[2];
  if (address == kMark) return Refuse(DriverError::GeneralFailure, "the mark is read only");
  if (address == kTransferMode && value > 1)
    return Refuse(DriverError::GeneralFailure, "sample size beyond 1");
  if (address == kHalfClock && value > 5) return Refuse(DriverError::GeneralFailure, "half clock beyond 5");
  fpga_[address] = value;
  if (address == kTransferMode) TakeBytesPerSample(value + 1);
  if (address == kHalfClock) Camera().SetHalfClock(value != 0);
  // The size is complete with its last byte.
  if (address == kHighestSizeRegister && !TakeTransferSize(LoadLittle32(fpga_.data())))
    return Refuse(DriverError::GeneralFailure, "transfer size " + std::to_string(LoadLittle32(fpga_.data())));
  return Accept();
}

DriverResult WomWire::ReadFpga(const Packet& packet) {
  return Reply({packet[1] == kMark ? kMarkOfThisCamera : fpga_[packet[1]]});
}

void WomWire::ResetController() {
  fpga_.fill(0);
  passesSamples_ = false;
  Camera().SetHalfClock(false);
}

const char* WomWire::ImageProblem(bool large) const {
  if (!large) return "image read by plain transfers";
  return passesSamples_ ? nullptr : "image read from a controller that does not pass samples on";
}

}  // namespace zel
