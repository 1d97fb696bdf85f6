// The protocol of the SATA cameras on literal bytes.
#include "sim/SataWire.h"

#include <gmock/gmock.h>

#include "SectorClient.h"

namespace zel {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::uint64_t kCommand = 0x20000, kAreaA = 0x200000, kAreaB = 0x1200000;

SimConfiguration SataCamera(std::vector<SimFault> faults = {}) {
  SimConfiguration configuration = FastCamera(std::move(faults));
  configuration.cameras = {{1, 'E'}};
  return configuration;
}

class SataClient : public SectorClient {
 public:
  explicit SataClient(SimDriverHost& host) : SectorClient(host, u"\\\\.\\E:"), host_(host) {}

  Bytes Sector() { return Read(kCommand, 512); }
  /// Writes the sector back with some bytes changed.
  bool Change(const std::vector<std::pair<std::size_t, int>>& bytes) { return Put(Sector(), bytes); }
  bool Put(Bytes sector, const std::vector<std::pair<std::size_t, int>>& bytes) {
    for (const auto& [offset, byte] : bytes) sector[offset] = static_cast<std::uint8_t>(byte);
    return Write(kCommand, sector);
  }
  void Wait() { host_.Sleep(8); }
  /// Aligned width and height, both below 256.
  bool Settings(int run, int oneByte, int width, int height) {
    const bool taken = Put(Bytes(512), {{46, run}, {48, oneByte}, {64, width}, {68, height}, {96, 1}});
    Wait();
    return taken;
  }
  void WriteRegister(int address, int value) {
    EXPECT_TRUE(Change({{34, 1}, {36, address}, {37, 0}, {38, value & 0xFF}, {39, value >> 8}}));
    for (int n = 0; n < 3; ++n) Sector();
    Wait();
  }

 private:
  SimDriverHost& host_;
};

TEST(SataWire, RegisterAccessTakesItsTime) {
  const auto host = MakeHost(SataCamera());
  SataClient client(*host);
  EXPECT_TRUE(client.Change({{34, 1}, {36, 0x09}, {38, 0x34}, {39, 0x12}}));
  EXPECT_EQ(client.Sector()[42], 1);
  EXPECT_EQ(client.Sector()[42], 1);
  const Bytes written = client.Sector();
  EXPECT_EQ(written[42], 2);
  EXPECT_EQ(written[34], 0) << "the sector can be written back without asking again";
  EXPECT_TRUE(client.Change({{34, 2}, {36, 0x09}}));
  EXPECT_EQ(client.Sector()[42], 4);
  EXPECT_EQ(client.Sector()[42], 4);
  const Bytes read = client.Sector();
  EXPECT_EQ(read[42], 8);
  EXPECT_EQ(Bytes(read.begin() + 40, read.begin() + 42), (Bytes{0x34, 0x12}));
  EXPECT_THAT(host->Camera({1, 'E'})->ProtocolErrors(), IsEmpty());
}

TEST(SataWire, RequestsAreLostUntilTheLastChangeHasSettled) {
  const auto host = MakeHost(SataCamera());
  SataClient client(*host);
  const VirtualCamera& camera = *host->Camera({1, 'E'});
  const auto write = [&](int value) {
    EXPECT_TRUE(client.Change({{34, 1}, {36, 0x09}, {38, value}, {39, 0}}));
    for (int n = 0; n < 3; ++n) client.Sector();
    return camera.ReadRegister(0x09) == static_cast<std::uint32_t>(value);
  };
  const auto stop = [&] { return client.Change({{46, 2}}); };
  EXPECT_TRUE(stop() && !write(10)) << "after a stop";
  client.Wait();
  EXPECT_TRUE(write(11));
  EXPECT_FALSE(write(12)) << "after a write";
  client.Wait();
  EXPECT_TRUE(write(13));
  client.Put(Bytes(512), {{46, 1}, {48, 1}, {64, 8}, {68, 8}});
  EXPECT_FALSE(client.TryRead(kAreaA, 512).ok) << "after the settings";
  client.Wait();
  EXPECT_TRUE(client.TryRead(kAreaA, 512).ok);
  EXPECT_THAT(camera.ProtocolErrors(), testing::SizeIs(3));
}

TEST(SataWire, AConverterFindsItsSourceBeforeItRuns) {
  SimConfiguration configuration = FastCamera();
  configuration.cameras = {{39, 'E'}};
  const auto host = MakeHost(configuration);
  SataClient client(*host);
  const auto runs = [&] { return client.Settings(1, 1, 8, 8) && client.Sector()[46] == 1; };
  EXPECT_FALSE(runs());
  host->Sleep(100);
  EXPECT_TRUE(runs());
}

TEST(SataWire, RefusesWhatTheProtocolDoesNotHave) {
  using Changes = std::vector<std::pair<std::size_t, int>>;
  const struct {
    bool whole, running;
    Changes changes;
    const char* error;
  } writes[] = {
      {false, false, {{34, 3}}, "unknown request 0x03"},
      {false, true, {{34, 1}}, "register access while the camera runs"},
      {false, false, {{34, 1}, {37, 1}}, "register address of two bytes"},
      {false, false, {{34, 1}, {0, 0}}, "request changes byte 0"},
      {false, false, {{34, 2}, {46, 1}}, "request changes byte 46"},
      {false, false, {{46, 3}}, "setting 0x03 in byte 46"},
      {false, false, {{80, 1}}, "settings are not zero in byte 0"},
      {true, false, {{46, 0}}, "setting 0x00 in byte 46"},
      {true, false, {{46, 1}, {48, 2}}, "setting 0x02 in byte 48"},
      {true, false, {{46, 1}, {96, 3}}, "setting 0x03 in byte 96"},
      {true, false, {{46, 1}, {72, 1}}, "settings are not zero in byte 72"},
  };
  for (const auto& c : writes) {
    const auto host = MakeHost(SataCamera());
    SataClient client(*host);
    if (c.running) client.Settings(1, 1, 8, 8);
    EXPECT_FALSE(client.Put(c.whole ? Bytes(512) : client.Sector(), c.changes)) << c.error;
    EXPECT_THAT(host->Camera({1, 'E'})->ProtocolErrors(), ElementsAre(HasSubstr(c.error)));
  }
  const auto host = MakeHost(SataCamera());
  SataClient client(*host);
  EXPECT_FALSE(client.TryRead(kAreaA, 512).ok);
  EXPECT_FALSE(client.TryRead(0, 512).ok);
  EXPECT_FALSE(client.Write(kAreaA, Bytes(512)));
  client.Settings(1, 1, 32, 32);
  EXPECT_FALSE(client.TryRead(kAreaA, 512).ok);
  client.Settings(2, 1, 32, 32);
  client.Change({{34, 1}});
  client.Settings(2, 1, 32, 32);
  EXPECT_THAT(host->Camera({1, 'E'})->ProtocolErrors(),
              ElementsAre("image read while the camera is stopped", "read of 512 bytes at 0x00",
                          "write of 512 bytes at 0x200000", "image read of 512 bytes from a frame of 1024",
                          "write while a register access is under way"));
}

TEST(SataWire, FramesAlternateBetweenTheAreasInAlignedRows) {
  const auto host = MakeHost(SataCamera());
  SataClient client(*host);
  client.WriteRegister(0x03, 19);
  client.WriteRegister(0x04, 29);
  client.WriteRegister(0x35, 255);
  EXPECT_EQ(client.Sector()[44], 0);
  for (const int oneByte : {1, 0}) {
    client.Settings(1, oneByte, 32, 24);
    EXPECT_EQ(client.Sector()[44], 2);
    EXPECT_EQ(client.Sector()[44], 2);
    const std::size_t size = oneByte != 0 ? 1024 : 1536;
    const std::ptrdiff_t pitch = oneByte != 0 ? 32 : 64;
    const Bytes frame = client.Read(kAreaA, size);
    ASSERT_EQ(frame.size(), size);
    for (std::ptrdiff_t y = 0; y < 24; ++y) {
      const auto row = frame.begin() + y * pitch;
      EXPECT_EQ(std::count(row, row + pitch, 0), y < 20 ? pitch / 16 : pitch) << y;
    }
    EXPECT_EQ(client.Sector()[44], 1);
    EXPECT_FALSE(client.Read(kAreaB, size).empty());
    EXPECT_FALSE(client.Read(kAreaB, size).empty()) << "waits for the next but one";
    EXPECT_EQ(client.Sector()[44], 2);
    client.Change({{46, 2}});
    EXPECT_EQ(client.Sector()[44], 0);
    client.Change({{46, 2}});
  }
  EXPECT_THAT(host->Camera({1, 'E'})->ProtocolErrors(), IsEmpty());
}

TEST(SataWire, FaultsReachTheHost) {
  using Kind = SimFault::Kind;
  const auto host = MakeHost(SataCamera({{Kind::Short, 1}, {Kind::Unplug, 2}}));
  SataClient client(*host);
  client.WriteRegister(0x03, 15);
  client.WriteRegister(0x04, 63);
  client.Settings(1, 1, 64, 16);
  EXPECT_EQ(client.TryRead(kAreaA, 1024).bytes, 512u);
  EXPECT_EQ(client.TryRead(kAreaB, 1024).error, DriverError::NotConnected);
  EXPECT_FALSE(client.Settings(2, 1, 64, 16));
}

}  // namespace
}  // namespace zel
