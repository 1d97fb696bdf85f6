#pragma once

#include <memory>
#include <string>
#include <vector>

#include "common/BytePacking.h"
#include "sim/SimDriverHost.h"

namespace zel {

using Bytes = std::vector<std::uint8_t>;

/// One type-13 camera and a program that speaks with it, by the shortest way.
class UsbClient {
 public:
  static constexpr std::uint32_t kSend = 0x222051, kReceive = 0x22204E, kSendLarge = 0x2220A9;

  explicit UsbClient(SimDriverHost& host, int index = 0) {
    OpenRequest request{u"\\\\.\\ZelUsbBD-", kAccessWrite, kShareWrite, 0};
    request.path += static_cast<char16_t>(u'0' + index);
    DriverError error{};
    const bool sleeps = host.Handles({13, index}) == 0;
    handle_ = host.Open(request, &error);
    if (sleeps) Command({0x06});
  }

  DriverHandle& Handle() { return *handle_; }

  DriverResult Transfer(std::uint32_t code, std::uint32_t pipe, Bytes& data) {
    std::uint8_t in[4];
    StoreLittle32(in, pipe);
    return handle_->Control(code, in, data);
  }

  bool Command(Bytes packet) {
    packet.resize(64);
    const DriverResult result = Transfer(kSend, 0, packet);
    return result.ok && result.bytes == 64;
  }

  void WriteRegister(std::uint8_t address, std::uint16_t value) {
    Command({0x04, address, ByteOf(value, 1), ByteOf(value, 0)});
  }

  unsigned ReadRegister(std::uint8_t address) {
    Bytes reply(64);
    Command({0x0C, address});
    (void)Transfer(kReceive, 1, reply);
    (void)Transfer(kReceive, 1, reply);
    return reply[0] * 256u + reply[1];
  }

  bool SetTimeout(std::uint32_t milliseconds) {
    Bytes setting(44, 0xEE), none;
    StoreLittle32(setting.data(), 1);
    StoreLittle32(setting.data() + 4, milliseconds);
    return handle_->Control(0x2220A0, setting, none).ok;
  }

  void SetTransfer(std::uint32_t pixels, int bytesPerSample) {
    Command({0x0A, static_cast<std::uint8_t>(bytesPerSample - 1)});
    Command({0x09, ByteOf(pixels, 0), ByteOf(pixels, 1), ByteOf(pixels, 2), ByteOf(pixels, 3)});
  }

  DriverResult ReadFrame(Bytes& frame) {
    Bytes start(64);
    start[0] = 0x02;
    const DriverResult started = Transfer(kReceive, 0, start);
    return started.ok ? Transfer(kSendLarge, 2, frame) : started;
  }

  /// A picture of columns x rows in 16-bit samples; empty when there was none.
  std::vector<std::uint16_t> ReadSamples(int columns, int rows) {
    const auto pixels = static_cast<std::uint32_t>(columns * rows);
    SetTransfer(pixels, 2);
    Bytes frame(2 * std::size_t{pixels});
    std::vector<std::uint16_t> samples;
    if (!ReadFrame(frame).ok) return samples;
    for (std::size_t n = 0; n < frame.size(); n += 2) samples.push_back(FromBytes16(frame[n], frame[n + 1]));
    return samples;
  }

  void SetWindow(int x, int y, int columns, int rows) {
    WriteRegister(0x01, static_cast<std::uint16_t>(y + 12));
    WriteRegister(0x02, static_cast<std::uint16_t>(x + 20));
    WriteRegister(0x03, static_cast<std::uint16_t>(rows - 1));
    WriteRegister(0x04, static_cast<std::uint16_t>(columns - 1));
  }

 private:
  std::unique_ptr<DriverHandle> handle_;
};

/// A host with one type-13 camera that gives frames as fast as they are read; its controller waits in virtual
/// time.
inline SimConfiguration FastCamera(std::vector<SimFault> faults = {}) {
  SimConfiguration configuration;
  configuration.cameras = {{13, 0}};
  configuration.framesPerSecond = 0;
  configuration.clock = std::make_shared<SimClock>(SimClock::Kind::Virtual);
  configuration.faults = std::move(faults);
  return configuration;
}

inline std::unique_ptr<SimDriverHost> MakeHost(const SimConfiguration& configuration) {
  std::string error;
  return SimDriverHost::Create(configuration, &error);
}

}  // namespace zel
