#pragma once

#include <array>
#include <cstdint>
#include <deque>
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
/// The camera sleeps until its first reset, and again once its last handle is closed: the driver suspends it.
/// A byte of the serial ROM takes a while to be programmed, the port's inputs to be sampled; replies wait in
/// their endpoint until they are read.
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
  /// What keeps an image from being read with a control code, or nothing.
  virtual const char* ImageProblem(bool /*large*/) const { return nullptr; }

  DriverResult Accept() const { return DriverResult::Done(sizeof(Packet)); }
  /// Before `settleMs` are over, the host gets what it got from the last such query.
  DriverResult Reply(const Packet& reply, const Packet& unsettled, std::uint32_t settleMs);
  DriverResult Reply(const Packet& reply) { return Reply(reply, reply, 0); }
  /// Programs a byte of the ROM, if it is ready for one.
  DriverResult ProgramRom(std::uint8_t* cell, std::uint8_t value);
  /// What a byte of the ROM holds now.
  std::uint8_t RomByte(const std::uint8_t& cell);
  DriverResult Refuse(DriverError error, const std::string& what);
  /// False for a size that no sensor needs.
  bool TakeTransferSize(std::uint32_t pixels);
  void TakeBytesPerSample(int bytes) { bytesPerSample_ = bytes; }

  void OnIdle() override;

 private:
  class Handle;

  struct QueuedReply {
    Packet packet, unsettled;
    SimTimer settling;
  };
  struct RomByteUnderWay {
    std::uint8_t* cell = nullptr;
    std::uint8_t value = 0;
  };
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
  DriverResult GiveImage(std::span<std::uint8_t> data, bool large);
  void FinishRomByte();

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
  bool isAwake_ = false;
  bool frameStarted_ = false;
  std::deque<QueuedReply> replies_;  // not read yet
  Packet lastReply_{};
  Packet inputs_{};  // as the last query of the port found them
  std::array<std::uint8_t, 256> rom_ = BlankRom();
  RomByteUnderWay romByte_;
  SimTimer romProgramming_{Clock()};
  std::array<std::uint16_t, 256> fpga_{};
  std::uint8_t outputs_ = 0;  // as command 0x28 carries them

  static std::array<std::uint8_t, 256> BlankRom();
};

}  // namespace zel
