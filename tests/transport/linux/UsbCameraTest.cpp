// The kernel's USB header has fields with a name that the component types define as a macro: it goes first.
#include "transport/linux/EmulatedUsb.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <thread>

#include "platform/Text.h"
#include "platform/posix/UsbCameras.h"
#include "transport/usb/UsbPackets.h"
#include "transport/usb3t2/CFx3Api.h"

/// The thread checker does not see how the emulation's threads keep apart, in libraries not built for it.
// NOLINTBEGIN(bugprone-reserved-identifier): the checker's name
extern "C" const char* __tsan_default_suppressions();
extern "C" const char* __tsan_default_suppressions() {
  return "race:libumockdev.so\nrace:libglib-2.0.so\nrace:libudev.so";
}
// NOLINTEND(bugprone-reserved-identifier)

namespace zel {
namespace {

using test::Bytes;
using test::EmulatedUsbDevice;

constexpr std::uint32_t kSend = 0x222051, kReceive = 0x22204E, kFx3Bulk = 0x220024;
constexpr char16_t kPath[] = u"\\\\.\\ZelUsbBD-0";

/// Command, reply and image pipe are 02, 86 and 88.
struct PipeCamera : EmulatedUsbDevice {
  explicit PipeCamera(const char* place)
      : EmulatedUsbDevice(place, 0x12C1, 0x02C0, {0x86, 0x02, 0x88, 0x04}) {}
};
struct Fx3Camera : EmulatedUsbDevice {
  explicit Fx3Camera(const char* place) : EmulatedUsbDevice(place, 0x04B4, 0x00F1, {0x81}) {}
};

std::unique_ptr<DriverHandle> Open(const std::u16string& path, DriverError* error) {
  return SystemDriverHost().Open({path, kAccessWrite, kShareWrite, 0}, error);
}

Bytes Pattern(std::size_t size) {
  Bytes bytes(size);
  for (std::size_t n = 0; n < size; ++n) bytes[n] = static_cast<std::uint8_t>(n * 7 + n / 4096);
  return bytes;
}

/// Waits for what another thread brings about.
template <class Condition>
bool Eventually(Condition condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!condition() && std::chrono::steady_clock::now() < deadline) std::this_thread::yield();
  return condition();
}

TEST(UsbCameras, AreFoundByTheirPlaceOrByTheVariables) {
  PipeCamera tenth("1-10"), second("1-2");
  Fx3Camera fx3("1-4");
  struct Case {
    const char16_t* path;
    const char* mappings;
    EmulatedUsbDevice* device;
    DriverError error = DriverError::None;
  };
  for (const auto& [path, mappings, device, error] : {
           Case{kPath, "", &second},
           Case{u"\\\\.\\zelusbac-1", "", &tenth},
           Case{u"\\\\.\\ZelWomGH-1", "", &tenth},
           Case{kPath, "ZelWomGH-0=1-2,zelusbbd-0=1-10", &tenth},
           Case{u"\\\\.\\ZelUsbAC-0", "ZelWomGH-0=1-2", &tenth},
           Case{u"\\\\.\\ZelUsbAC-1", "ZelWomGH-0=1-2", nullptr, DriverError::FileNotFound},
           Case{kPath, "ZelUsbBD-0=1-4", nullptr, DriverError::FileNotFound},
           Case{kPath, "ZelUsbBD-0=1-", nullptr, DriverError::InvalidParameter},
           Case{u"usb:1-4", "", &fx3},
           Case{u"usb:1-2", "", nullptr, DriverError::FileNotFound},
       }) {
    setenv("ZELCAM_USB", mappings, 1);
    DriverError found = DriverError::GeneralFailure;
    const auto handle = Open(path, &found), again = Open(path, &found);
    EXPECT_EQ(found, error) << ToUtf8(path) << mappings;
    for (EmulatedUsbDevice* any : std::initializer_list<EmulatedUsbDevice*>{&tenth, &second, &fx3})
      EXPECT_EQ(any->TakeLog(), any == device ? "claim" : "") << ToUtf8(path) << mappings;
  }
  unsetenv("ZELCAM_USB");
  DriverError error = DriverError::None;
  second.claimError = EBUSY;
  EXPECT_EQ(Open(kPath, &error), nullptr);
  EXPECT_EQ(error, DriverError::SharingViolation) << "another program has it";

  DriverHost& host = SystemDriverHost();
  EXPECT_EQ(host.InterfacePath(kFx3InterfaceClass, 0), u"usb:1-4");
  EXPECT_EQ(host.InterfacePath(kFx3InterfaceClass, 1), std::nullopt);
  EXPECT_EQ(host.InterfacePath(GUID{}, 0), std::nullopt);
  setenv("ZELCAM_FX3_IDS", "04B4:00f3,12c1:02c0", 1);
  EXPECT_EQ(host.InterfacePath(kFx3InterfaceClass, 1), u"usb:1-10");
  for (const char* wrong : {"12c1", "12c1:2c0", "12c1:02c0:", "12c1:02c0,x"}) {
    setenv("ZELCAM_FX3_IDS", wrong, 1);
    EXPECT_EQ(host.InterfacePath(kFx3InterfaceClass, 0), std::nullopt) << wrong;
  }
  unsetenv("ZELCAM_FX3_IDS");
}

TEST(UsbCameras, AreAllNamedInTheRules) {
  std::ifstream file(ZEL_SOURCE_FOLDER "/packaging/linux/70-zelcam.rules");
  const std::string rules{std::istreambuf_iterator<char>(file), {}};
  for (const std::span<const UsbId> ids : {PipeCameraIds(), Fx3CameraIds()}) {
    for (const UsbId& id : ids) {
      char match[64];
      std::snprintf(match, sizeof match, R"(ATTR{idVendor}=="%04x", ATTR{idProduct}=="%04x")", id.vendor,
                    id.product);
      EXPECT_NE(rules.find(match), std::string::npos) << match;
    }
  }
}

class UsbPipes : public testing::Test {
 protected:
  UsbPipes() {
    EXPECT_TRUE(usb_.Open(kPath));
    handle_ = Open(kPath, &error_);
    camera_.TakeLog();
  }
  DriverResult ReadImage(std::span<std::uint8_t> data) {
    return handle_->Control(kSend, Bytes{2, 0, 0, 0}, data);
  }

  PipeCamera camera_{"1-2"};
  CUsbDevice usb_;
  DriverError error_ = DriverError::None;
  std::unique_ptr<DriverHandle> handle_;
};

TEST_F(UsbPipes, CarryRegisterPacketsAndAFrame) {
  UsbPacket write = RegisterWritePacket(0x09, 0x1234), query = RegisterReadPacket(0x1E);
  EXPECT_TRUE(SendPacket(usb_, write));
  camera_.Send(0x86, Bytes(64, 0x55));
  camera_.Send(0x86, Bytes(64, 0xAB));
  EXPECT_TRUE(QueryPacket(usb_, query));
  EXPECT_EQ(query[0], 0xAB);
  EXPECT_EQ(camera_.TakeLog(), "02: 04091234; 02: 0c1e");

  const Bytes frame = Pattern(std::size_t{2592} * 1944);
  Bytes received(frame.size());
  UsbPacket start = MakePacket(UsbCommand::StartFrame);
  std::uint32_t moved = 0;
  EXPECT_TRUE(usb_.BulkTransfer(UsbTransferKind::Plain, UsbPipe::Command, start, &moved, false));
  EXPECT_EQ(camera_.TakeLog(), "02: 02");
  camera_.Send(0x88, frame);
  EXPECT_TRUE(usb_.BulkTransfer(UsbTransferKind::Alternative, UsbPipe::Image, received, &moved, true));
  EXPECT_EQ(moved, frame.size());
  EXPECT_TRUE(received == frame);
  EXPECT_GT(camera_.UnderWay().second, 1u) << "the bus waits between two pieces";
}

TEST_F(UsbPipes, TellOfShortReadsTimeOutsAndStallsAndGoOn) {
  const Bytes half = Pattern((3 << 19) + 100), whole = Pattern(3 << 20);
  Bytes received(whole.size());
  const auto readsWhole = [&] {
    camera_.Send(0x88, whole);
    std::ranges::fill(received, std::uint8_t{0});
    return ReadImage(received).bytes == whole.size() && received == whole;
  };

  camera_.Send(0x88, half);
  const DriverResult cut = ReadImage(received);
  EXPECT_TRUE(cut.ok);
  EXPECT_EQ(cut.bytes, half.size());
  EXPECT_TRUE(std::equal(half.begin(), half.end(), received.begin()));
  EXPECT_TRUE(readsWhole());

  EXPECT_TRUE(usb_.SetDriverTimeout(40)) << "holds for the other handle, too";
  const std::uint64_t before = SystemDriverHost().Milliseconds();
  EXPECT_EQ(ReadImage(received).error, DriverError::Timeout);
  EXPECT_GE(SystemDriverHost().Milliseconds() - before, 39u);
  EXPECT_TRUE(usb_.SetDriverTimeout(0));
  EXPECT_TRUE(readsWhole());

  camera_.Stall(0x88);
  EXPECT_EQ(ReadImage(received).error, DriverError::GeneralFailure);
  EXPECT_EQ(camera_.TakeLog(), "clear 88");
  EXPECT_TRUE(readsWhole());
  usb_.ResetImagePipe();
  EXPECT_EQ(camera_.TakeLog(), "clear 88");

  EXPECT_EQ(handle_->Control(kSend, Bytes{3, 0, 0, 0}, received).error, DriverError::InvalidParameter);
  EXPECT_EQ(handle_->Control(kReceive, Bytes{1}, received).error, DriverError::InvalidParameter);
}

TEST_F(UsbPipes, EndAtOnceWhenTheCameraIsUnpluggedAndReopenWhenItIsBack) {
  usb_.SetDriverTimeout(0);
  Bytes data(1 << 20);
  DriverResult torn;
  std::thread reader([&] { torn = ReadImage(data); });
  EXPECT_TRUE(Eventually([&] { return camera_.UnderWay().first > 0; }));
  camera_.Unplug();
  reader.join();
  EXPECT_EQ(torn.error, DriverError::NotConnected);
  EXPECT_EQ(ReadImage(data).error, DriverError::NotConnected);

  PipeCamera back("1-2");
  EXPECT_TRUE(Eventually([&] { return (handle_ = Open(kPath, &error_)) != nullptr; }));
  back.Send(0x88, Bytes(64, 1));
  EXPECT_TRUE(handle_ && ReadImage(data).bytes == 64);
  handle_.reset();
}

class UsbFx3 : public testing::Test {
 protected:
  UsbFx3() {
    EXPECT_TRUE(fx3_.Open(0));
    camera_.TakeLog();
  }
  Fx3Camera camera_{"1-3"};
  CFx3Api fx3_;
  std::uint32_t received_ = 0;
};

TEST_F(UsbFx3, CarriesVendorRequestsWithTheLengthOfTheirData) {
  EXPECT_TRUE(fx3_.BusWrite(0x40, Bytes{0x6C, 0x00, 0x01}));
  EXPECT_EQ(camera_.TakeLog(), "4030030040004000: 6c0001");
  EXPECT_TRUE(fx3_.StartFrame());
  EXPECT_EQ(camera_.TakeLog(), "42c2000000004000");

  Bytes value(2);
  camera_.Send(0, {0x12, 0x34});
  EXPECT_TRUE(fx3_.BusRead(0x40, value, &received_));
  EXPECT_EQ(camera_.TakeLog(), "c031020041004000");
  EXPECT_EQ(value, (Bytes{0x12, 0x34}));
  EXPECT_EQ(received_, 2u);

  camera_.Stall(0);
  EXPECT_FALSE(fx3_.BusWrite(0x40, value));
}

TEST_F(UsbFx3, ReadsAndTellsInTheHeaderHowItWent) {
  const Bytes picture = Pattern(0x80000);
  Bytes in(64 + picture.size());
  camera_.Send(0x81, picture);
  EXPECT_TRUE(fx3_.BulkReadAt(in, 64, picture.size(), 0x81, &received_));
  EXPECT_EQ(received_, picture.size());
  EXPECT_TRUE(std::equal(picture.begin(), picture.end(), in.begin() + 64));

  camera_.Send(0x81, Bytes(64, 0x77));
  const auto read = fx3_.StartDirectRead(in, 0x81);
  EXPECT_TRUE(read && read->Wait(10'000) && read->Finish(&received_));
  EXPECT_EQ(received_, 64u);
  EXPECT_EQ(in[63], 0x77);

  DriverError error = DriverError::None;
  const auto handle = Open(u"usb:1-3", &error);
  ASSERT_NE(handle, nullptr);
  Bytes transfer(38 + 512);
  transfer[8] = 40;  // ms
  transfer[13] = 0x81;
  transfer[30] = 38;
  transfer[35] = 2;  // 512 bytes
  const Bytes noStatus(8);
  const auto statusIsClear = [&] { return std::equal(noStatus.begin(), noStatus.end(), &transfer[14]); };
  EXPECT_EQ(handle->Control(kFx3Bulk, transfer, transfer).error, DriverError::Timeout);
  EXPECT_FALSE(statusIsClear());
  camera_.Send(0x81, Bytes(16, 1));
  EXPECT_EQ(handle->Control(kFx3Bulk, transfer, transfer).bytes, 38u + 16u);
  EXPECT_TRUE(statusIsClear());
  transfer[36] = 1;  // more data than there is room
  EXPECT_EQ(handle->Control(kFx3Bulk, transfer, transfer).error, DriverError::InvalidParameter);
}

TEST_F(UsbFx3, EndsReadsByAbortByDestructionAndByUnplugging) {
  Bytes data(4096);
  auto read = fx3_.StartDirectRead(data, 0x81);
  EXPECT_FALSE(read->Wait(0));
  EXPECT_FALSE(read->Finish(&received_));
  EXPECT_TRUE(fx3_.AbortPipe(0x81));
  EXPECT_TRUE(read->Wait(10'000));
  EXPECT_FALSE(read->Finish(&received_));
  read = fx3_.StartDirectRead(data, 0x81);
  read.reset();

  EXPECT_TRUE(fx3_.ResetPipe(0x81) && fx3_.ResetParentPort());
  EXPECT_EQ(camera_.TakeLog(), "clear 81; release; reset; claim");
  std::uint32_t speed = 0;
  EXPECT_TRUE(fx3_.GetSpeed(&speed));
  EXPECT_EQ(speed, 2u) << "high";

  read = fx3_.StartDirectRead(data, 0x81);
  camera_.Unplug();
  EXPECT_TRUE(read->Wait(10'000));
  EXPECT_FALSE(read->Finish(&received_));
  EXPECT_FALSE(fx3_.StartFrame());
  read.reset();
  EXPECT_TRUE(Eventually([&] { return !fx3_.Probe(0); }));
}

}  // namespace
}  // namespace zel
