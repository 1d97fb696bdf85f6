#pragma once

#include "sim/UsbWire.h"

namespace zel {

/// The wire of the WOM cameras: that of the USB 2.0 cameras, but with an FPGA of 8-bit registers that takes
/// frame size, sample size and clock, and a serial ROM beyond 256 bytes. The controller has to be told to
/// pass the FPGA's samples on as they are; they come too fast for the driver's plain transfers.
class WomWire : public UsbWire {
 public:
  using UsbWire::UsbWire;

 protected:
  std::optional<std::size_t> CommandLength(std::uint8_t code) const override;
  DriverResult SetTransferMode(const Packet& packet) override;
  DriverResult WriteRom(const Packet& packet) override;
  DriverResult ReadRom(const Packet& packet) override;
  DriverResult WriteFpga(const Packet& packet) override;
  DriverResult ReadFpga(const Packet& packet) override;
  void ResetController() override;
  const char* ImageProblem(bool large) const override;

 private:
  bool passesSamples_ = false;
  std::array<std::uint8_t, 256> fpga_{};
  /// ROM addresses 0x1F00 to 0x1FFF, which take two bytes in a packet. Below them only 0x00 to 0x1E can be
  /// told from these: a packet does not say how long its address is.
  std::array<std::uint8_t, 256> highRom_{};
};

}  // namespace zel
