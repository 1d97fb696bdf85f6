// Whole cameras behind libusb: simulated ones, whose packets and vendor requests come from the emulated bus.
#include "transport/linux/EmulatedUsb.h"

#include <chrono>
#include <thread>

#include "common/BytePacking.h"
#include "transport/linux/WholeCamera.h"

namespace zel {
namespace {

using test::Bytes;
using test::EmulatedUsbDevice;

/// A USB 2.0 or WOM camera: command, reply and image pipe are 02, 86 and 88.
class PipeCamera : public EmulatedUsbDevice {
 public:
  explicit PipeCamera(SimDriverHost& host, const std::u16string& path)
      : EmulatedUsbDevice("1-2", 0x12C1, 0x02C0, {0x86, 0x02, 0x88, 0x04}) {
    DriverError error{};
    handle_ = host.Open({path, kAccessWrite, kShareWrite, 0}, &error);
  }

 protected:
  static constexpr std::uint32_t kSend = 0x222051, kReceive = 0x22204E, kSendLarge = 0x2220A9;

  void OnData(std::uint8_t, const Bytes& packet) override {
    Bytes copy = packet;
    if (packet[0] == 0x02) {
      (void)Transfer(kReceive, 0, copy);
      Bytes image(pixels_ * bytesPerSample_);
      if (Transfer(kSendLarge, 2, image).ok) Send(0x88, std::move(image));
      return;
    }
    (void)Transfer(kSend, 0, copy);
    Note(packet);
    for (const std::uint8_t query : {0x0C, 0x21, 0x24, 0x26, 0x29}) {
      if (packet[0] != query) continue;
      for (int n = 0; n < 2; ++n) {
        Bytes reply(64);
        if (Transfer(kReceive, 1, reply).ok) Send(0x86, reply);
      }
    }
  }

 private:
  DriverResult Transfer(std::uint32_t code, std::uint8_t pipe, Bytes& data) {
    return handle_->Control(code, Bytes{pipe, 0, 0, 0}, data);
  }

  /// The size of a frame, which the real camera's endpoint needs not know.
  void Note(const Bytes& packet) {
    if (packet[0] == 0x09) pixels_ = LoadLittle32(&packet[1]);
    if (packet[0] == 0x25 && packet[1] < 4) size_[packet[1]] = packet[2];
    if (packet[0] == 0x25 && packet[1] == 3) pixels_ = LoadLittle32(size_);
  }

  std::unique_ptr<DriverHandle> handle_;
  std::size_t pixels_ = 0, bytesPerSample_ = 1;
  std::uint8_t size_[4] = {};
};

/// An FX3 camera: it sends header and picture once a frame is started.
class Fx3Camera : public EmulatedUsbDevice {
 public:
  explicit Fx3Camera(SimDriverHost& host) : EmulatedUsbDevice("1-3", 0x04B4, 0x00F1, {0x81}) {
    constexpr GUID kClass = {0x328184C5, 0x93E6, 0x49B7, {0x94, 0xB8, 0x2A, 0xDA, 0x13, 0xAA, 0xBB, 0x39}};
    DriverError error{};
    handle_ = host.Open(
        {host.InterfacePath(kClass, 0).value_or(u""), kAccessWrite, kShareWrite, kOpenOverlapped}, &error);
  }

 protected:
  void OnControl(const Bytes& setup, const Bytes& data) override {
    Bytes transfer = WithHeader(Bytes(setup.begin(), setup.begin() + 6), 0, 64);
    std::ranges::copy(data, transfer.begin() + kHeader);
    const DriverResult result = handle_->Control(0x220020, transfer, transfer);
    if (!result.ok) return Stall(0);
    if (setup[0] & 0x80) return Send(0, {transfer.begin() + kHeader, transfer.begin() + result.bytes});
    if (setup[1] != 0xC2) return;
    const Bytes header = Read(64);
    std::size_t left = LoadLittle32(&header[16]);
    while (left > 0) left -= Read(std::min(left, kPiece)).size();
  }
  void OnReset() override { (void)handle_->Control(0x220030, {}, {}); }

 private:
  static constexpr std::size_t kHeader = 38, kPiece = 512 << 10;

  static Bytes WithHeader(Bytes setup, std::uint8_t endpoint, std::size_t data) {
    setup.resize(kHeader + data);
    setup[6] = ByteOf(setup.size(), 0);
    setup[7] = ByteOf(setup.size(), 1);
    setup[8] = 0xFF;
    setup[13] = endpoint;
    setup[30] = kHeader;
    StoreLittle32(&setup[34], static_cast<std::uint32_t>(data));
    return setup;
  }
  Bytes Read(std::size_t bytes) {
    Bytes transfer = WithHeader({0x80, 0x33}, 0x81, bytes);
    EXPECT_TRUE(handle_->Control(0x220024, transfer, transfer).ok);
    Bytes data(transfer.begin() + kHeader, transfer.end());
    Send(0x81, data);
    return data;
  }

  std::unique_ptr<DriverHandle> handle_;
};

void TakeFramesAndUnplug(SimCameraAddress address, LONG mode) {
  SCOPED_TRACE(testing::Message() << "type " << address.type << ", mode " << mode);
  const auto host = test::FarEnd(address);
  std::unique_ptr<EmulatedUsbDevice> device;
  if (address.type == 98) {
    device = std::make_unique<Fx3Camera>(*host);
  } else {
    device =
        std::make_unique<PipeCamera>(*host, address.type == 13 ? u"\\\\.\\ZelUsbBD-0" : u"\\\\.\\ZelWomGH-0");
  }
  const auto camera = test::RunSession(address, mode, *host);
  EXPECT_EQ(camera->Play(), 1);
  device->Unplug();
  EXPECT_TRUE(test::RunsDry(*camera));
  EXPECT_EQ(camera->Stop(), 1);
  // The system tells of it by a thread of its own; the limit only ends a hang.
  LONG connected = 1;
  for (int tries = 0; tries < 60'000 && connected != 0; ++tries) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    camera->IsCameraConnected(&connected);
  }
  EXPECT_EQ(connected, 0);
}

TEST(WholeUsbCameras, BringFramesUntilTheyAreUnplugged) {
  for (const LONG mode : {kDeliverOnDemand, kDeliverQueue}) {
    for (const int type : {13, 67, 98}) TakeFramesAndUnplug({type, 0}, mode);
  }
}

}  // namespace
}  // namespace zel
