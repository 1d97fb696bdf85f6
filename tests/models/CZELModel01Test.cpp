#include <gtest/gtest.h>

#include "models/Factory.h"
#include "transport/ScriptedDriverHost.h"
#include "transport/sata/CZELDeviceImplSATA.h"
#include "transport/sata/CZELDevicePropertyImplSATA.h"

namespace zel {
namespace {

class CZELModel01 : public testing::Test {
 protected:
  CZELModel01() {
    sector.resize(512);
    host.logTransfers = false;
    host.takeWrite = [this](std::uint64_t, std::vector<std::uint8_t> data) { Take(std::move(data)); };
    EXPECT_EQ(camera->OpenCamera('E'), 1);
  }

  /// Carries out a register request at once.
  void Take(std::vector<std::uint8_t> data) {
    sector = std::move(data);
    auto& held = host.registers[sector[36]];
    if (sector[34] == 1) held = static_cast<std::uint16_t>(sector[39] << 8 | sector[38]);
    sector[40] = static_cast<std::uint8_t>(held);
    sector[41] = static_cast<std::uint8_t>(held >> 8);
    if (sector[34] != 0) sector[42] = answers ? 0x0A : 0;
    sector[34] = 0;
  }
  /// The register accesses of a capture preparation, with the settings that the store has.
  std::string Prepare() {
    host.TakeLog();
    EXPECT_EQ(property.ApplyColorMatrix(), S_OK);
    return host.TakeLog();
  }
  std::string Prepare(const std::string& from, const std::string& to) {
    const std::string log = Prepare();
    const std::size_t begin = log.find(from);
    const std::size_t end = log.find(to, begin);
    return begin == std::string::npos || end == std::string::npos ? log : log.substr(begin, end - begin);
  }

  bool answers = true;
  test::ScriptedDriverHost host;
  ScopedDriverHost installed{host};
  std::vector<std::uint8_t>& sector = host.sectors[0x100 * 512];
  std::unique_ptr<CZELDevice> created{CreateDeviceForType(1)};
  CZELDeviceImplSATA* camera = dynamic_cast<CZELDeviceImplSATA*>(created.get());
  CZELDevicePropertyImpl& property = camera->PropertyStore();
};

const std::string kPreparation =
    "sleep 8; write 1=14; sleep 8; write 2=20; sleep 8; write 3=5FF; sleep 8; write 4=7FF; sleep 8; write "
    "5=15; sleep 8; write 6=3; sleep 8; sleep 8; "
    "read 22=0; sleep 8; read 23=0; sleep 8; write 22=0; sleep 8; write 23=0; sleep 8; sleep 8; "
    "write AF=0; sleep 8; write 35=3C; sleep 8; "
    "read 8=0; sleep 8; read 9=0; sleep 8; write AF=0; sleep 8; write 9=12C; sleep 8; "
    "read 20=0; write 20=0; read 20=0; sleep 8; read 20=0; write 20=0; read 20=0; sleep 8; "
    "sleep 8; "
    "read 1E=0; sleep 8; write 1E=0; sleep 8; read 1E=0; "
    "read 1E=0; sleep 8; write 1E=0; sleep 8; sleep 8";

TEST_F(CZELModel01, PreparationWritesEverySettingInOrder) {
  EXPECT_EQ(camera->GetCameraType(), 1);
  EXPECT_EQ(Prepare(), kPreparation);
  created.reset();
  EXPECT_EQ(host.openHandles, 0);
}

TEST_F(CZELModel01, ASensorThatNeverAnswersDoesNotHinderTheCapture) {
  answers = false;
  EXPECT_EQ(Prepare().find("write"), std::string::npos);
}

TEST_F(CZELModel01, WindowsOfSensorAndStore) {
  const struct {
    std::array<LONG, 4> asked, stored;
    const char* sensor;
  } rows[] = {
      {{0, 0, 2048, 1536}, {0, 0, 2048, 1536}, "write 1=14; write 2=20; write 3=5FF; write 4=7FF; "},
      {{5, 7, 101, 51}, {5, 7, 101, 51}, "write 1=1A; write 2=24; write 3=33; write 4=65; "},
      {{2047, 1535, 100, 100}, {2045, 1533, 3, 3}, "write 1=610; write 2=81C; write 3=3; write 4=3; "},
      {{5, 7, 2, 51}, {2045, 1533, 3, 3}, "write 1=610; write 2=81C; write 3=3; write 4=3; "},
      {{100, 50, 3, 51}, {100, 50, 3, 51}, "write 1=46; write 2=84; write 3=33; write 4=3; "},
      {{-9, -9, 4, 0x7FFFFFFF}, {0, 0, 4, 1536}, "write 1=14; write 2=20; write 3=5FF; write 4=3; "},
      {{2047, 0, 0x7FFFFFFF, 3}, {2045, 0, 3, 3}, "write 1=14; write 2=81C; write 3=3; write 4=3; "},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(property.SetROI(row.asked[0], row.asked[1], row.asked[2], row.asked[3]), S_OK);
    std::array<LONG, 4> stored{};
    for (LONG id = 0; id < 4; ++id) stored[static_cast<std::size_t>(id)] = property.Record(id).current;
    EXPECT_EQ(stored, row.stored);
    std::string log = Prepare("write 1=", "write 5=");
    for (std::size_t at; (at = log.find("sleep 8; ")) != std::string::npos;) log.erase(at, 9);
    EXPECT_EQ(log, row.sensor);
  }
}

TEST_F(CZELModel01, SettingsOnTheSensor) {
  const auto edit = [&](LONG id, LONG value) {
    const_cast<PropertyRecord&>(property.Record(id)).current = value;
  };
  const struct {
    std::function<void()> change;
    std::uint16_t held;  ///< by every register before
    const char *from, *to, *log;
  } rows[] = {
      {[&] { property.SetDigitalGlobalGain(63); }, 9, "write AF", "read 8",
       "write AF=0; sleep 8; write 35=3F; sleep 8; "},
      {[&] { property.SetShutter(6400); }, 9, "write 9", "; ", "write 9=1900"},
      {[&] { property.SetVerMirror(1); }, 0x4080, "read 20", "sleep",
       "read 20=4080; write 20=C080; read 20=C080; "},
      {[&] { property.SetVerMirror(0); }, 0xFFFF, "read 20", "sleep",
       "read 20=FFFF; write 20=7FFF; read 20=7FFF; "},
      {[&] { property.SetHorMirror(1); }, 0x0010, "read 20=10; write 20=4010", "sleep",
       "read 20=10; write 20=4010; read 20=4010; "},
      {[&] { property.SetExtTrigger(1); }, 0x8010, "write 1E=8110", "; sleep 8; sleep", "write 1E=8110"},
      {[&] { property.SetStrobe(1); }, 0x8010, "read 1E", "; read 1E=8210; sleep",
       "read 1E=8010; sleep 8; write 1E=8210; sleep 8; read 1E=8210"},
      {[] {}, 0x12FF, "read 22", "; sleep 8; write AF",
       "read 22=12FF; sleep 8; read 23=12FF; sleep 8; write 22=12C0; sleep 8; write 23=12C0; sleep 8"},
      {[&] { edit(kSubSampleY, 1), edit(kSubSampleX, 0x13); }, 0x12FF, "write 22", "; sleep 8; write AF",
       "write 22=1201; sleep 8; write 23=1213; sleep 8"},
  };
  for (const auto& row : rows) {
    row.change();
    for (const std::uint8_t address : {0x08, 0x09, 0x1E, 0x20, 0x22, 0x23})
      host.registers[address] = row.held;
    EXPECT_EQ(Prepare(row.from, row.to), row.log);
    for (const LONG id : {kVerMirror, kHorMirror, kExtTrigger, kStrobe}) edit(id, 0);
  }
}

TEST_F(CZELModel01, MosaicFollowsTheSensorsEvenWindow) {
  for (LONG n = 0; n < 4; ++n) {
    property.SetROI(11, 21, 100 + n, 101 - n);
    property.SetVerMirror(n & 1);
    property.SetHorMirror(n >> 1);
    EXPECT_EQ(property.UpdateDerivedSizes(), n);
  }
}

}  // namespace
}  // namespace zel
