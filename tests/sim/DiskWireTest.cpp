// The protocol of the disk-style cameras on literal bytes.
#include "sim/DiskWire.h"

#include <gmock/gmock.h>

#include "SectorClient.h"

namespace zel {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::uint64_t kStatus = 0x20000, kCommand = 0x20200, kImage = 0x20400;

/// A type-78 camera at drive 2 that gives frames as fast as they are read.
SimConfiguration DiskCamera(std::vector<SimFault> faults = {}) {
  SimConfiguration configuration = FastCamera(std::move(faults));
  configuration.cameras = {{78, 2}};
  return configuration;
}

class DiskClient : public SectorClient {
 public:
  explicit DiskClient(SimDriverHost& host) : SectorClient(host, u"\\\\.\\PhysicalDrive2") {}

  bool Command(Bytes bytes) { return Write(kCommand, std::move(bytes)); }
  Bytes Status() { return Read(kStatus, 512); }
  void WriteRegister(unsigned address, unsigned value) {
    for (const unsigned byte : {1u, 0u}) {
      const unsigned at = address + 1 - byte;
      EXPECT_TRUE(Command({0x20, ByteOf(at, 1), ByteOf(at, 0), ByteOf(value, byte)}));
    }
  }
};

TEST(DiskWire, StatusTellsWhoItIsAndRegistersComeByteByByte) {
  const auto host = MakeHost(DiskCamera());
  DiskClient client(*host);
  const Bytes status = client.Status();
  EXPECT_EQ(std::string(status.begin(), status.begin() + 6), "ORVANE");
  EXPECT_EQ(Bytes(status.begin() + 26, status.begin() + 30), (Bytes{0xE0, 6, 0xEA, 3}));
  client.WriteRegister(0x3003, 1);
  client.WriteRegister(0x3002, 0x1234);  // the registers do not overlap
  const struct {
    Bytes command;
    unsigned answer;
  } reads[] = {{{0x21, 0x30, 0x02}, 0x12}, {{0x21, 0x30, 0x03}, 0x34}, {{0x21, 0x30, 0x03}, 0},
               {{0x21, 0x30, 0x04}, 1},    {{0x21, 0x20, 0x14}, 0x13}, {{0x21, 0x20, 0x15}, 0x20}};
  for (const auto& read : reads) {
    EXPECT_TRUE(client.Command(read.command));
    EXPECT_EQ(client.Status()[257], read.answer);
  }
  EXPECT_THAT(host->Camera({78, 2})->ProtocolErrors(), IsEmpty());
  client.Command({0x20, 0, 5, 1});
  client.Command({0x21, 0, 6});
  EXPECT_THAT(host->Camera({78, 2})->ProtocolErrors(), ElementsAre("register 0x05 without its low byte"));
}

TEST(DiskWire, RefusesWhatTheProtocolDoesNotHave) {
  const struct {
    bool write;
    std::uint64_t position;
    Bytes data;
    const char* error;
  } cases[] = {
      {false, kStatus, Bytes(1024), "read of 1024 bytes at 0x20000"},
      {false, kCommand, Bytes(512), "read of 512 bytes at 0x20200"},
      {false, 0, Bytes(512), "read of 512 bytes at 0x00"},
      {false, kImage, Bytes(1024), "image read before a frame is ready"},
      {true, kStatus, Bytes(512), "write of 512 bytes at 0x20000"},
      {true, kCommand, Bytes(1024), "write of 1024 bytes at 0x20200"},
      {true, kCommand, {0x11}, "unknown command 0x11"},
      {true, kCommand, {0x10, 1}, "command 0x10 is not zero after its data"},
      {true, kCommand, {0x20, 1, 2, 3, 4}, "command 0x20 is not zero after its data"},
      {true, kCommand, {0x21, 1, 2, 3}, "command 0x21 is not zero after its data"},
  };
  for (const auto& c : cases) {
    const auto host = MakeHost(DiskCamera());
    DiskClient client(*host);
    const bool done =
        c.write ? client.Write(c.position, c.data) : client.TryRead(c.position, c.data.size()).ok;
    EXPECT_FALSE(done) << c.error;
    EXPECT_THAT(host->Camera({78, 2})->ProtocolErrors(), ElementsAre(HasSubstr(c.error)));
  }
}

TEST(DiskWire, AFrameIsReadyOnceAndReadAsAWhole) {
  const auto host = MakeHost(DiskCamera());
  DiskClient client(*host);
  EXPECT_EQ(client.Status()[256], 0) << "before the capture was prepared";
  client.WriteRegister(0x2014, 30);
  client.WriteRegister(0x2016, 20);
  client.Command({0x10});
  EXPECT_FALSE(client.TryRead(kImage, 1024).ok) << "before it was seen ready";
  EXPECT_EQ(client.Status()[256], 0) << "while it is prepared";
  host->Sleep(8);
  client.WriteRegister(0x05, 1023);
  EXPECT_EQ(client.Status()[256], 1);
  EXPECT_EQ(client.Status()[256], 1);
  EXPECT_FALSE(client.TryRead(kImage, 512).ok);
  const Bytes frame = client.Read(kImage, 1024);
  EXPECT_EQ(std::ranges::find(frame, 0) - frame.begin(), 600);
  EXPECT_EQ(std::ranges::count(frame, 0), 424);
  EXPECT_FALSE(client.TryRead(kImage, 1024).ok);
  client.Status();
  client.Command({0x10});
  EXPECT_FALSE(client.TryRead(kImage, 1024).ok) << "preparing forgets the frame";
}

TEST(DiskWire, PreparingResetsTheExposureAndIsDeafForAWhile) {
  const auto host = MakeHost(DiskCamera());
  DiskClient client(*host);
  const VirtualCamera& camera = *host->Camera({78, 2});
  client.WriteRegister(0x2004, 500);
  client.WriteRegister(0x05, 600);
  client.Command({0x10});
  EXPECT_EQ(camera.ReadRegister(0x2004), 2u);
  EXPECT_EQ(camera.ReadRegister(0x05), 100u);
  for (const std::uint32_t waited : {0, 8}) {
    host->Sleep(waited);
    client.WriteRegister(0x05, 700);
    EXPECT_EQ(camera.ReadRegister(0x05), waited != 0 ? 700u : 100u);
  }
  EXPECT_THAT(camera.ProtocolErrors(), testing::SizeIs(2)) << "a byte each";
}

TEST(DiskWire, FaultsReachTheHost) {
  using Kind = SimFault::Kind;
  const auto host = MakeHost(DiskCamera({{Kind::Short, 1}, {Kind::Unplug, 2}}));
  DiskClient client(*host);
  client.WriteRegister(0x2014, 32);
  client.WriteRegister(0x2016, 32);
  client.Command({0x10});
  host->Sleep(8);
  client.Status();
  const DriverResult cut = client.TryRead(kImage, 1024);
  EXPECT_TRUE(cut.ok);
  EXPECT_EQ(cut.bytes, 512u);
  EXPECT_EQ(client.TryRead(kStatus, 512).error, DriverError::NotConnected);
  EXPECT_FALSE(client.Command({0x10}));
}

TEST(DiskWire, OpensForReadingAndWriting) {
  const std::pair<OpenRequest, DriverError> cases[] = {
      {{u"\\\\.\\PhysicalDrive2", 0xC0000000, 3, 0}, DriverError::None},
      {{u"\\\\.\\PhysicalDrive2", 0xC0000000, 1, 0}, DriverError::None},
      {{u"\\\\.\\PhysicalDrive0", 0xC0000000, 3, 0}, DriverError::FileNotFound},
      {{u"\\\\.\\PhysicalDrive2", 0xC0000000, 2, 0}, DriverError::AccessDenied},
      {{u"\\\\.\\PhysicalDrive2", 0x80000000, 3, 0}, DriverError::AccessDenied},
      {{u"\\\\.\\PhysicalDrive2", 0xC0000000, 3, 0x40000000}, DriverError::AccessDenied},
  };
  const auto host = MakeHost(DiskCamera());
  for (const auto& [request, expected] : cases) {
    DriverError error = DriverError::Pending;
    EXPECT_EQ(host->Open(request, &error) != nullptr, expected == DriverError::None);
    EXPECT_EQ(error, expected);
  }
}

}  // namespace
}  // namespace zel
