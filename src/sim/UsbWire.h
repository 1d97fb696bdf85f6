#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <string>

#include "sim/SimDevice.h"

namespace zel {

/// The wire of the USB 2.0 cameras: 64-byte command packets to pipe 0, 64-byte replies from pipe 1, images
/// from pipe 2, each transfer one driver control call. Takes only what the camera and its driver define; all
/// else fails and is noted as a protocol error.
///
/// An image transfer starts with the picture, rows of the window's width without gaps, and is zero after it.
class UsbWire : public SimDevice {
 public:
  using SimDevice::SimDevice;

  std::u16string Path() const override;
  std::unique_ptr<DriverHandle> Open(const OpenRequest& request, DriverError* error) override;

 protected:
  using Packet = std::array<std::uint8_t, 64>;

  // What the WOM cameras do otherwise. All with the lock held.
  /// How many bytes of a command may differ from 0, or nothing for one that the camera does not know.
  virtual std::optional<std::size_t> CommandLength(std::uint8_t code) const;
  virtual DriverResult SetTransferSize(const Packet& packet);
  virtual DriverResult SetTransferMode(const Packet& packet);
  virtual DriverResult WriteRom(const Packet& packet);
  virtual DriverResult ReadRom(const Packet& packet);
  virtual DriverResult WriteFpga(const Packet& packet);
  virtual DriverResult ReadFpga(const Packet& packet);
  virtual void ResetController();

  DriverResult Accept() const { return DriverResult::Done(sizeof(Packet)); }
  DriverResult Reply(const Packet& reply);
  DriverResult Refuse(DriverError error, const std::string& what);
  /// False for a size that no sensor needs.
  bool TakeTransferSize(std::uint32_t pixels);
  void TakeBytesPerSample(int bytes) { bytesPerSample_ = bytes; }

 private:
  class Handle;

  struct Command {
    std::uint8_t code;
    std::size_t length;  // bytes that may differ from 0
    DriverResult (UsbWire::*run)(const Packet& packet);
  };
  static const Command kCommands[];

  DriverResult Control(std::uint32_t code, std::span<const std::uint8_t> in, std::span<std::uint8_t> out);
  DriverResult SetDriver(std::span<const std::uint8_t> in, std::span<const std::uint8_t> out);
  DriverResult ResetImagePipe(std::span<const std::uint8_t> in, std::span<const std::uint8_t> out);
  DriverResult TakeCommand(std::span<const std::uint8_t> data);
  DriverResult StartFrame(std::span<const std::uint8_t> data);
  DriverResult GiveReply(std::span<std::uint8_t> data);
  DriverResult GiveImage(std::span<std::uint8_t> data);

  DriverResult WriteRegister(const Packet& packet);
  DriverResult ReadRegister(const Packet& packet);
  DriverResult ResetCamera(const Packet& packet);
  DriverResult SetHalfClock(const Packet& packet);
  DriverResult ReadHalfClock(const Packet& packet);
  DriverResult WriteBlock(const Packet& packet);
  DriverResult SetOutputs(const Packet& packet);
  DriverResult ReadInputs(const Packet& packet);

  std::uint32_t RegisterAddress(const Packet& packet) const;

  std::mutex mutex_;                // guards what follows; not held while a frame is awaited
  std::uint32_t timeout_ = 3000;    // ms
  std::uint32_t transferSize_ = 0;  // pixels; 0: not set since the reset
  int bytesPerSample_ = 1;
  bool frameStarted_ = false;
  int unreadReplies_ = 0;  // the second one of a pair is the current one
  Packet staleReply_{}, reply_{};
  std::array<std::uint8_t, 256> rom_ = BlankRom();
  std::array<std::uint16_t, 256> fpga_{};
  std::uint8_t outputs_ = 0;  // as command 0x28 carries them

  static std::array<std::uint8_t, 256> BlankRom();
};

}  // namespace zel
