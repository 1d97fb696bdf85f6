// Frames over time: numbers, faults, trigger, time-outs, unplugging, two threads on one camera.
#include "sim/SimDriverHost.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "UsbClient.h"
#include "sim/FrameCode.h"

namespace zel {
namespace {

using testing::ElementsAre;
using testing::Ge;
using testing::IsEmpty;
using Kind = SimFault::Kind;
using std::chrono::milliseconds;

constexpr int kColumns = 200, kRows = 80;
constexpr std::uint32_t kPixels = kColumns * kRows;

/// A client whose camera streams small pictures of the chart.
class Stream {
 public:
  explicit Stream(const SimConfiguration& configuration) : host(MakeHost(configuration)), client(*host) {
    client.SetWindow(0, 0, kColumns, kRows);
    client.SetTransfer(kPixels, 1);
  }

  DriverResult Read() {
    frame.assign(kPixels, 0xEE);
    return client.ReadFrame(frame);
  }
  /// Number of the next frame; 0 when it shows none, -1 when there is no frame.
  int Number() {
    if (!Read().ok) return -1;
    const auto number = ReadFrameNumber(frame.data(), kColumns, kRows, kColumns, 1);
    return static_cast<int>(number.value_or(0));
  }
  std::vector<int> Numbers(int count) {
    std::vector<int> numbers;
    while (count-- > 0) numbers.push_back(Number());
    return numbers;
  }

  std::unique_ptr<SimDriverHost> host;
  UsbClient client;
  Bytes frame;
};

TEST(SimHost, NumbersStartWithTheStreamFaultsDoNot) {
  Stream stream(FastCamera({{Kind::Drop, 2}}));
  EXPECT_THAT(stream.Numbers(3), ElementsAre(1, 3, 4));
  stream.client.SetTransfer(kPixels, 1);
  EXPECT_THAT(stream.Numbers(2), ElementsAre(1, 2));
}

TEST(SimHost, FaultsComeAtTheirFrames) {
  Stream stream(FastCamera(
      {{Kind::Drop, 2}, {Kind::Drop, 3}, {Kind::Garbage, 5}, {Kind::Short, 6}, {Kind::Unplug, 8}}));
  EXPECT_THAT(stream.Numbers(3), ElementsAre(1, 4, 0));
  const DriverResult cut = stream.Read();
  EXPECT_TRUE(cut.ok);
  EXPECT_EQ(cut.bytes, kPixels / 2);
  EXPECT_EQ(stream.Number(), 7);
  EXPECT_EQ(stream.Read().error, DriverError::NotConnected);
  EXPECT_EQ(stream.Read().error, DriverError::NotConnected);
  EXPECT_FALSE(stream.client.Command({0x06}));
  DriverError error{};
  EXPECT_EQ(stream.host->Open({u"\\\\.\\ZelUsbBD-0", kAccessWrite, kShareWrite, 0}, &error), nullptr);
  EXPECT_EQ(error, DriverError::FileNotFound);
  EXPECT_THAT(stream.host->Camera({13, 0})->ProtocolErrors(), IsEmpty());
}

TEST(SimHost, AStallDelaysTheFrameOrTimesOut) {
  Stream stream(FastCamera({{Kind::Stall, 2, milliseconds(30)}, {Kind::Stall, 3, std::chrono::hours(1)}}));
  EXPECT_EQ(stream.Number(), 1);
  const auto before = std::chrono::steady_clock::now();
  EXPECT_EQ(stream.Number(), 2);
  EXPECT_THAT(std::chrono::steady_clock::now() - before, Ge(milliseconds(30)));
  ASSERT_TRUE(stream.client.SetTimeout(5));
  EXPECT_EQ(stream.Read().error, DriverError::Timeout);
  EXPECT_EQ(stream.Read().error, DriverError::Timeout) << "still stalled";
}

TEST(SimHost, AFrameIsDueOncePerPeriod) {
  SimConfiguration configuration = FastCamera();
  configuration.framesPerSecond = 200;
  Stream stream(configuration);
  const auto before = std::chrono::steady_clock::now();
  EXPECT_THAT(stream.Numbers(7), ElementsAre(1, 2, 3, 4, 5, 6, 7));
  EXPECT_THAT(std::chrono::steady_clock::now() - before, Ge(milliseconds(30)));
}

TEST(SimHost, ATriggeredCameraWaitsForItsPulse) {
  SimConfiguration configuration = FastCamera();
  configuration.triggerRate = 100;
  Stream pulsed(configuration);
  pulsed.client.WriteRegister(0x1E, 0x100);
  const auto before = std::chrono::steady_clock::now();
  EXPECT_THAT(pulsed.Numbers(4), ElementsAre(1, 2, 3, 4));
  EXPECT_THAT(std::chrono::steady_clock::now() - before, Ge(milliseconds(29)));

  configuration.triggerRate = 0;
  Stream silent(configuration);
  silent.client.WriteRegister(0x1E, 0x100);
  ASSERT_TRUE(silent.client.SetTimeout(5));
  EXPECT_EQ(silent.Read().error, DriverError::Timeout);
  silent.client.WriteRegister(0x1E, 0);
  EXPECT_EQ(silent.Number(), 1) << "a time-out costs no frame";
}

/// A read that nothing but the given act can end runs beside register traffic, which must not wait for it.
void WakeBlockedRead(DriverError expected, const std::function<void(Stream&)>& act) {
  SimConfiguration configuration = FastCamera();
  configuration.triggerRate = 0;
  Stream stream(configuration);
  stream.client.WriteRegister(0x1E, 0x100);
  ASSERT_TRUE(stream.client.SetTimeout(120000));
  UsbClient registers(*stream.host);
  DriverError error = DriverError::Pending;
  const auto before = std::chrono::steady_clock::now();
  std::thread reader([&] { error = stream.Read().error; });
  for (unsigned n = 0; n < 200; ++n) {
    registers.WriteRegister(0x35, static_cast<std::uint16_t>(n));
    EXPECT_EQ(registers.ReadRegister(0x35), n);
  }
  act(stream);
  reader.join();
  EXPECT_EQ(error, expected);
  EXPECT_THAT(std::chrono::steady_clock::now() - before, testing::Lt(std::chrono::seconds(60)));
}

TEST(SimHost, ABlockedReadEndsWhenTheCameraOrTheHostGoesOrTheTriggerIsSwitchedOff) {
  WakeBlockedRead(DriverError::NotConnected, [](Stream& s) { s.host->Camera({13, 0})->Unplug(); });
  WakeBlockedRead(DriverError::None, [](Stream& s) { UsbClient(*s.host).WriteRegister(0x1E, 0); });
  WakeBlockedRead(DriverError::NotConnected, [](Stream& s) { s.host.reset(); });
}

TEST(SimHost, SettingsChangeUnderARunningStream) {
  Stream stream(FastCamera());
  std::atomic<bool> done = false;
  std::thread registers([&] {
    UsbClient client(*stream.host);
    for (std::uint16_t n = 0; !done; ++n) {
      client.WriteRegister(0x09, n & 0x3FFF);
      client.WriteRegister(0x20, static_cast<std::uint16_t>(n << 14));
      client.WriteRegister(0x01, 12 + n % 64);
    }
  });
  const std::vector<int> numbers = stream.Numbers(100);
  done = true;
  registers.join();
  for (int n = 0; n < 100; ++n) EXPECT_EQ(numbers[static_cast<std::size_t>(n)], n + 1);
  EXPECT_THAT(stream.host->Camera({13, 0})->ProtocolErrors(), IsEmpty());
}

}  // namespace
}  // namespace zel
