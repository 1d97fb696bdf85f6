// The FX3 protocol on literal bytes.
#include "sim/Fx3Wire.h"

#include <gmock/gmock.h>

#include <cmath>

#include "UsbClient.h"

namespace zel {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr GUID kClass = {0x328184C5, 0x93E6, 0x49B7, {0x94, 0xB8, 0x2A, 0xDA, 0x13, 0xAA, 0xBB, 0x39}};
constexpr int kColumns = 600, kRows = 500;
constexpr std::size_t kPixels = std::size_t{kColumns} * kRows;

Bytes Transfer(Bytes bytes, std::uint8_t endpoint, std::size_t data) {
  bytes.resize(38 + data);
  bytes[6] = ByteOf(38 + data, 0);
  bytes[7] = ByteOf(38 + data, 1);
  bytes[9] = 0x0B;
  bytes[13] = endpoint;
  bytes[30] = 38;
  StoreLittle32(&bytes[34], static_cast<std::uint32_t>(data));
  return bytes;
}

Bytes Request(Bytes setup, const Bytes& data = {}) {
  Bytes transfer = Transfer(std::move(setup), 0, 64);
  std::ranges::copy(data, transfer.begin() + 38);
  return transfer;
}

Bytes BulkRead(std::size_t bytes) {
  return Transfer({0x80, 0x33}, 0x81, bytes);
}

/// One type-98 camera, ready for frames, and a program that speaks with it by the shortest way.
class Fx3Client {
 public:
  explicit Fx3Client(std::vector<SimFault> faults = {}) {
    SimConfiguration configuration = FastCamera(std::move(faults));
    configuration.cameras = {{98, 2}};
    configuration.noise = 0;
    host = MakeHost(configuration);
    Open();
    EXPECT_TRUE(WriteFpga(108, 1) && WriteFpga(108, 0) && ResetPort() && Send({0x40, 0xC0}));
    WriteSensor(3, kRows - 1);
    WriteSensor(4, kColumns - 1);
    for (const auto& [address, value] :
         {std::pair(60, 1), {68, kColumns}, {69, kColumns >> 8}, {64, kRows}, {65, kRows >> 8}})
      WriteFpga(static_cast<std::uint8_t>(address), static_cast<std::uint8_t>(value));
    for (const std::uint8_t value : {0x22, 0}) {
      for (const std::uint8_t lane : {72, 73, 76, 77}) WriteFpga(lane, value);
    }
  }

  void Open() {
    DriverError error{};
    handle = host->Open({host->InterfacePath(kClass, 2).value_or(u""), 0x40000000, 2, 0x40000000}, &error);
  }
  std::vector<std::string> Errors() { return host->Camera({98, 2})->ProtocolErrors(); }
  DriverResult Control(std::uint32_t code, Bytes& transfer) {
    return handle->Control(code, transfer, transfer);
  }
  bool Send(Bytes setup, const Bytes& payload = {}) {
    Bytes transfer = Request(std::move(setup), payload);
    return Control(0x220020, transfer).ok;
  }
  bool WriteFpga(std::uint8_t address, std::uint8_t value) {
    return Send({0x40, 0x30, 3, 0, 0x40}, {address, 0, value});
  }
  bool WriteSensor(std::uint8_t address, unsigned value) {
    return Send({0x40, 0x30, 4, 0, 0xBA}, {0, address, ByteOf(value, 1), ByteOf(value, 0)});
  }
  bool ResetPort() {
    Bytes none;
    return Control(0x220030, none).ok;
  }
  bool Start() { return Send({0x42, 0xC2}); }
  /// Bytes behind the header, or -1; they are in `data` then.
  int Read(std::size_t bytes) {
    data = BulkRead(bytes);
    const DriverResult result = Control(0x220024, data);
    data.erase(data.begin(), data.begin() + 38);
    return result.ok ? static_cast<int>(result.bytes) - 38 : -1;
  }

  std::unique_ptr<SimDriverHost> host;
  std::unique_ptr<DriverHandle> handle;
  Bytes data;
};

TEST(Fx3Wire, RefusesWhatTheProtocolDoesNotHave) {
  const auto with = [](Bytes transfer, std::size_t at, std::uint8_t byte) {
    transfer[at] = byte;
    return transfer;
  };
  const Bytes fpga = Request({0x40, 0x30, 3, 0, 0x40}, {7, 0, 1});
  const struct {
    std::uint32_t code;
    Bytes transfer;
    const char* error;
  } cases[] = {
      {0x220021, fpga, "unknown control code 0x220021"},
      {0x220020, BulkRead(63), "control transfer of 101 bytes"},
      {0x220020, with(fpga, 6, 64), "header of vendor request 0x30"},
      {0x220020, with(fpga, 12, 1), "header of vendor request 0x30"},
      {0x220020, with(fpga, 13, 0x81), "header of vendor request 0x30"},
      {0x220020, with(fpga, 30, 0), "header of vendor request 0x30"},
      {0x220020, with(fpga, 34, 3), "header of vendor request 0x30"},
      {0x220020, with(fpga, 0, 0xC0), "unknown vendor request 0x30 of type 0xC0"},
      {0x220020, with(fpga, 2, 65), "bus write of 65 bytes"},
      {0x220020, with(fpga, 2, 2), "bus write of 2 bytes"},
      {0x220020, with(fpga, 39, 1), "bus write of 3 bytes to 0x40"},
      {0x220020, Request({0xC0, 0x31, 2, 0, 0x40}), "bus read of 2 bytes from 0x40"},
      {0x220024, with(BulkRead(64), 13, 0x82), "header of a bulk transfer of 102 bytes"},
      {0x220024, with(BulkRead(64), 34, 65), "header of a bulk transfer of 102 bytes"},
      {0x220024, BulkRead(64), "read of 64 bytes without a frame"},
      {0x22002C, {0x82}, "names no bulk endpoint"},
  };
  for (const auto& c : cases) {
    Fx3Client client;
    Bytes transfer = c.transfer;
    EXPECT_FALSE(client.Control(c.code, transfer).ok) << c.error;
    EXPECT_THAT(client.Errors(), ElementsAre(HasSubstr(c.error)));
  }
}

TEST(Fx3Wire, StepsOutOfOrder) {
  // clang-format off
  const std::pair<const char*, bool (*)(Fx3Client&)> cases[] = {
      {"frame header of 65 bytes", [](auto& c) { return c.Start() && c.Read(65) > 0; }},
      {"beyond the end of the picture", [](auto& c) { return c.Start() && c.Read(64) > 0 && c.Read(kPixels + 1) > 0; }},
      {"read of 1 bytes without a frame", [](auto& c) { return c.Start() && c.Read(64) > 0 && c.Read(kPixels) > 0 && c.Read(1) > 0; }},
      {"before the last frame was read", [](auto& c) { return c.Start() && c.Start(); }},
      {"without a reset of the lanes", [](auto& c) { return c.WriteFpga(64, 1) && c.Start(); }},
      {"without a reset of the lanes", [](auto& c) { return c.WriteFpga(76, 0x22) && c.Start(); }},
      {"0 bytes per sample", [](auto& c) { return c.WriteFpga(60, 0) && c.Start(); }},
      {"from a window of 300 x 500", [](auto& c) { return c.WriteSensor(4, 299) && c.Start() && c.Read(64) > 0; }},
      {"while the controller is out of step", [](auto& c) { return c.WriteFpga(108, 1) && c.WriteFpga(108, 0) && c.Start(); }},
      {"while the controller is out of step", [](auto& c) { return c.ResetPort() && c.Start(); }},
      {"piece of 100000 bytes", [](auto& c) { return c.Start() && c.Read(64) > 0 && c.Read(100'000) > 0; }},
      {"held in reset", [](auto& c) { return c.WriteFpga(108, 1) && c.WriteFpga(60, 1); }},
  };
  // clang-format on
  for (const auto& [error, run] : cases) {
    Fx3Client client;
    EXPECT_FALSE(run(client)) << error;
    EXPECT_THAT(client.Errors(), ElementsAre(HasSubstr(error)));
  }
}

TEST(Fx3Wire, TheFpgaIsLoadedByItsFirstReset) {
  SimConfiguration configuration = FastCamera();
  configuration.cameras = {{98, 0}};
  const auto host = MakeHost(configuration);
  DriverError error{};
  const auto handle =
      host->Open({host->InterfacePath(kClass, 0).value_or(u""), 0x40000000, 2, 0x40000000}, &error);
  for (const auto& [address, taken] : {std::pair(60, false), {108, true}}) {
    Bytes write = Request({0x40, 0x30, 3, 0, 0x40}, {static_cast<std::uint8_t>(address), 0, 1});
    EXPECT_EQ(handle->Control(0x220020, write, write).ok, taken) << address;
  }
}

TEST(Fx3Wire, FramesAndTheirFaults) {
  using Kind = SimFault::Kind;
  Fx3Client client({{Kind::Short, 2}, {Kind::Garbage, 3}, {Kind::Unplug, 5}});
  for (std::uint32_t number = 1; number <= 2; ++number) {
    ASSERT_TRUE(client.Start());
    EXPECT_EQ(client.Read(64), 64);
    EXPECT_EQ(LoadLittle32(&client.data[16]), kPixels);
    EXPECT_EQ(LoadLittle32(&client.data[20]), number);
    EXPECT_EQ(client.Read(kPixels), static_cast<int>(number == 1 ? kPixels : kPixels / 2));
  }
  EXPECT_TRUE(client.Start() && client.Read(64) == 64);
  EXPECT_NE(LoadLittle32(&client.data[16]), kPixels);
  EXPECT_TRUE(client.Start() && client.Read(64) == 64);
  client.Open();  // closing the handle before ended its frame
  EXPECT_TRUE(client.Start() && client.Read(64) == -1);
  EXPECT_FALSE(client.host->InterfacePath(kClass, 2));
  EXPECT_THAT(client.Errors(), IsEmpty());
}

TEST(Fx3Wire, ATransferWaitsUntilItsFrameOrAnAbort) {
  Fx3Client client({{SimFault::Kind::Stall, 1, std::chrono::hours(1)}});
  ASSERT_TRUE(client.Start());
  Bytes transfer = BulkRead(64), none;
  DriverError error{};
  const auto pending = client.handle->BeginControl(0x220024, transfer, transfer, &error);
  ASSERT_NE(pending, nullptr);
  EXPECT_EQ(pending->Wait(1), PendingControl::Waited::Timeout);
  EXPECT_EQ(pending->Finish().error, DriverError::Pending);
  EXPECT_TRUE(client.handle->Control(0x220044, Bytes{0x81}, none).ok);
  EXPECT_EQ(pending->Wait(50), PendingControl::Waited::Done);
  EXPECT_EQ(pending->Finish().error, DriverError::Aborted);
  EXPECT_TRUE(client.Start());
  EXPECT_THAT(client.Errors(), IsEmpty());
}

TEST(Fx3Wire, TheLensBlursOutsideItsDepth) {
  Fx3Client client;
  client.WriteSensor(1, 512);  // the chart's star
  client.WriteSensor(2, 2250);
  std::vector<double> edges;
  for (const std::uint8_t position : {128, 144, 160, 255, 0}) {
    client.WriteFpga(120, position);
    ASSERT_TRUE(client.Start() && client.Read(64) == 64 && client.Read(kPixels) > 0);
    double sum = 0;
    for (std::size_t n = kPixels / 5; n < kPixels / 5 * 4; ++n)  // between the frame codes
      sum += std::pow(client.data[n] - client.data[n - 2], 2);
    edges.push_back(sum);
  }
  EXPECT_EQ(edges[0], edges[1]);
  EXPECT_GT(edges[1], 1.1 * edges[2]);
  EXPECT_GT(edges[2], 1.1 * edges[3]);
  EXPECT_GT(edges[3], edges[4]) << "farther away";
}

}  // namespace
}  // namespace zel
