#include <gtest/gtest.h>

#include "imaging/COrvaneImage.h"
#include "transport/ScriptedDriverHost.h"
#include "transport/sata/CZELDeviceImplSATA.h"
#include "transport/sata/CZELDevicePropertyImplSATA.h"

namespace zel {
namespace {

using test::ScriptedDriverHost;

constexpr std::uint64_t kCommand = 0x20000, kAreaA = 0x200000, kAreaB = 0xA00000;
constexpr OLECHAR kName[] = {'Z', 0};

TEST(SataFrame, IsAlignedAndPaddedToSectors) {
  const struct {
    LONG width, height;
    bool twoBytes, packedColor;
    std::array<LONG, 5> frame;  ///< aligned size, sectors, padding, total
  } rows[] = {
      {1001, 1001, false, false, {1008, 1008, 1985, 256, 2032384}},
      {1001, 1001, true, false, {1004, 1004, 3938, 224, 2016256}},
      {1001, 1001, false, true, {1008, 1008, 5954, 256, 3048448}},
      {1001, 1001, true, true, {1004, 1004, 5907, 336, 3024384}},
      {2048, 1536, false, false, {2048, 1536, 6144, 0, 6291456}},
      {2048, 1536, true, false, {2048, 1536, 12288, 0, 6291456}},
      {1, 1, false, false, {8, 8, 1, 448, 576}},
      {0, 8, false, false, {}},
      {8, -1, false, false, {}},
      {65536, 8, true, false, {}},
      {65532, 65532, true, false, {}},
  };
  for (const auto& row : rows) {
    const SataFrame f = LayOutSataFrame(row.width, row.height, row.twoBytes, row.packedColor);
    EXPECT_EQ((std::array{f.alignedWidth, f.alignedHeight, f.sectorCount, f.padding, f.totalBytes}),
              row.frame)
        << row.width << ' ' << row.twoBytes << row.packedColor;
  }
}

class TestProperty : public CZELDevicePropertyImplSATA {
 public:
  TestProperty() {
    sectors_ = {.command = 0x100, .areaA = 0x1000, .areaB = 0x5000};
    for (const LONG id : {kHorMirror, kVerMirror, kExtTrigger}) Edit(id) = {.maximum = 1, .supported = 1};
    Edit(kRoiWidth).current = 20;
    Edit(kRoiHeight).current = 10;
  }
  using CZELDevicePropertyImpl::Edit;
  using CZELDevicePropertyImplSATA::MarkPending;
  using CZELDevicePropertyImplSATA::ReadRegister24;
  using CZELDevicePropertyImplSATA::ReadRegister8;
  using CZELDevicePropertyImplSATA::WriteRegister24;
  using CZELDevicePropertyImplSATA::WriteRegister8;
  using CZELDevicePropertyImplSATA::WriteSettings;

 protected:
  LONG ApplyPostPrepare() override { return Say(u"ready"); }
  LONG ApplyWindow() override { return Say(u"window"); }
  LONG ApplySubSampling() override { return Say(u"sub-sampling"); }
  LONG ApplyGain() override { return Say(u"gain"); }
  LONG ApplyShutter() override { return Say(u"shutter"); }
  LONG ApplyVerMirror() override { return Say(u"rows"); }
  LONG ApplyHorMirror() override { return Say(u"columns"); }
  LONG ApplyModelOption() override { return Say(u"option"); }
  LONG ApplyStrobe() override { return Say(u"strobe"); }

 private:
  static LONG Say(std::u16string_view text) {
    CurrentDriverHost().ShowMessage(text);
    return E_FAIL;  // nobody looks
  }
};

class TestCamera : public CZELDeviceImplSATA {
 public:
  ~TestCamera() override {
    Shutdown();
    CloseDevice(0);
  }
  LONG PrepareCapture() override { return prepared = CZELDeviceImplSATA::PrepareCapture(); }
  LONG GetCameraType() override { return 1; }
  const OLECHAR* GetDriverName() override { return kName; }
  CZELDeviceProperty* GetProperty() override { return &property; }
  CZELDevicePropertyImpl& PropertyStore() override { return property; }

  TestProperty property;
  LONG prepared = -1;
};

/// A camera on volume E: that is done with a register access when it is asked.
class SataTransport : public testing::Test, public CZELObserver {
 protected:
  SataTransport() {
    sector.resize(512);
    host.sectors[kAreaA].assign(512, 0xA1);
    host.sectors[kAreaB].assign(512, 0xB1);
    host.takeWrite = [this](std::uint64_t, std::vector<std::uint8_t> data) {
      sector = std::move(data);
      if (sector[34] != 0) sector[42] = sector[34] == 1 ? 2 : 8;
      sector[34] = 0;
    };
    camera.SetBufferSamples(kDeliverOnDemand);
  }
  void Open() {
    ASSERT_EQ(camera.OpenCamera('E'), 1);
    camera.SetObserver(this);
    host.TakeLog();
  }
  void Play() {
    Open();
    ASSERT_EQ(camera.Play(), 1);
    ASSERT_EQ(camera.prepared, 1);
    host.TakeLog();
  }
  void Notify(LONG event, void* param, CZELDevice*) override {
    if (event == kEventStateChanged || event == kEventFrameProcessed) return;
    EXPECT_EQ(param, nullptr);
    const auto last = property.LastRegisterEvent();
    events.push_back({event, last.result, last.address, last.high, last.low});
  }
  std::vector<std::vector<LONG>> TakeEvents() { return std::exchange(events, {}); }

  ScriptedDriverHost host;
  ScopedDriverHost installed{host};
  std::vector<std::uint8_t>& sector = host.sectors[kCommand];
  std::vector<std::vector<LONG>> events;
  TestCamera camera;
  TestProperty& property = camera.property;
  std::vector<std::uint8_t> buffer = std::vector<std::uint8_t>(512);
};

const std::string kStop = "@20000 512; @20000: +46 02; sleep 8";

TEST_F(SataTransport, RegisterRequestsKeepTheRestOfTheSectorAndFailWithAnyCall) {
  const struct {
    const char* log;
    int calls;
    bool (*run)(TestProperty&);
  } rows[] = {
      {"@20000 512; @20000: 55 +34 01 00 35 00 34 12 77; @20000 512; write 35=1234", 6,
       [](auto& p) { return p.WriteRegister8(0x35, 0x12, 0x34); }},
      {"@20000 512; @20000: 55 +34 02 00 35 +40 77; @20000 512; @20000 512; read 35=6677", 8,
       [](auto& p) {
         std::uint8_t high = 0, low = 0;
         return p.ReadRegister8(0x35, &high, &low) && high == 0x66 && low == 0x77;
       }},
      {"@20000 512; @20000: 55 +34 01 00 34 12 BC 9A 77 +50 38; @20000 512; write 1234=389ABC", 6,
       [](auto& p) { return p.WriteRegister24(0x1234, 0x789ABC); }},
      {"@20000 512; @20000 512; @20000 512; read 1234=286677", 6,
       [](auto& p) {
         LONG value = 0;
         return p.ReadRegister24(0x1234, &value) && value == 0x286677;
       }},
  };
  Open();
  host.takeWrite = [this](auto, auto data) {
    sector = data;
    sector[42] = 0x0A;
    sector[41] = 0x66;
  };
  for (const auto& row : rows) {
    for (int n = -1; n < row.calls; ++n) {
      sector.assign(512, 0);
      sector[0] = 0x55;
      sector[40] = 0x77;
      if (row.calls == 6 && std::string(row.log).ends_with("77")) {  // what a wide read collects
        sector[41] = 0x66;
        sector[42] = 8;
        sector[50] = 0x28;
      }
      host.TakeLog();
      if (n >= 0) host.faultAt = n;
      EXPECT_EQ(row.run(property), n < 0) << row.log << ", call " << n;
      if (n < 0) {
        EXPECT_EQ(host.TakeLog(), row.log);
      }
    }
  }
}

TEST_F(SataTransport, PollingEndsWithDoneOrNothingOrAfterAHundredReads) {
  const struct {
    std::vector<std::uint8_t> writeStatus;  ///< from the first poll on; the last one stays
    bool done;
    int polls;
  } rows[] = {{{0x02}, true, 1},    {{0x01, 0x01, 0x03}, true, 3}, {{0x00}, false, 1},
              {{0xF0}, false, 1},   {{0x01, 0x00}, false, 2},      {{0x08, 0x04, 0x02}, true, 3},
              {{0x01}, false, 100}, {{0x04}, false, 100},          {{0x08}, false, 100}};
  Open();
  for (const auto& row : rows) {
    for (const bool reads : {false, true}) {
      int polls = -1;  // the first read is for the request
      host.beforeRead = [&](auto, auto& bytes) {
        if (++polls == 0 || polls > 100) return;
        const auto n = std::min<std::size_t>(static_cast<std::size_t>(polls), row.writeStatus.size()) - 1;
        const std::uint8_t s = row.writeStatus[n];
        bytes[42] = reads ? static_cast<std::uint8_t>((s & 0xF0) | (s & 3) << 2 | (s & 0xC) >> 2) : s;
      };
      std::uint8_t high = 0, low = 0;
      const bool done = reads ? property.ReadRegister8(1, &high, &low) : property.WriteRegister8(1, 2, 3);
      EXPECT_EQ(done, row.done);
      EXPECT_EQ(polls, row.polls + (reads && done ? 1 : 0)) << unsigned{row.writeStatus[0]};
    }
  }
}

TEST_F(SataTransport, SettingsSector) {
  const struct {
    std::function<void()> change;
    const char* bytes;
  } rows[] = {
      {[] {}, "+46 01 00 01 +64 18 +68 10 +96 01"},
      {[&] { property.SetTransMode(1); }, "+46 01 +64 14 +68 0C +96 01"},
      {[&] { property.SetTransBits(3); }, "+46 01 +64 14 +68 0C +96 08"},
      {[&] { property.SetTransBits(4); }, "+46 01 +64 14 +68 0C"},
      {[&] { property.SetExtTrigger(1); }, "+46 01 +64 14 +68 0C +80 01"},
      {[&] { property.SetAuxValue1(0); }, "+46 01 +64 14 +68 0C +80 01 +98 02"},
      {[&] { property.SetAuxValue2(0); }, "+46 01 +64 14 +68 0C +80 01 +98 03"},
      {[&] { property.Edit(kRoiWidth).current = 1000, property.Edit(kRoiHeight).current = 700; },
       "+46 01 +64 E8 00 03 00 BC 00 02 +80 01 +98 03"},
  };
  Open();
  for (const auto& row : rows) {
    row.change();
    camera.PrepareCapture();
    const std::string log = host.TakeLog();
    const std::string last = std::string("@20000: ") + row.bytes + "; @20000 512; sleep 8";
    EXPECT_TRUE(log.ends_with(last)) << log;
  }
  EXPECT_EQ(property.OnCaptureStopped(), S_OK);
  EXPECT_TRUE(host.TakeLog().starts_with("@20000: +46 02 +64 E8"));
}

TEST_F(SataTransport, PreparationAppliesEverythingToAStoppedCamera) {
  property.Edit(kStrobe).supported = 1;
  EXPECT_EQ(property.ApplyColorMatrix(), E_HANDLE);
  Open();
  ASSERT_EQ(camera.Play(), 1);
  EXPECT_EQ(host.TakeLog(),
            "@20000: +46 02 00 01 +64 18 +68 10 +96 01; @20000 512; sleep 8; message window; sleep 8; "
            "message sub-sampling; sleep 8; message gain; sleep 8; message shutter; sleep 8; message rows; "
            "sleep 8; message columns; sleep 8; message option; sleep 8; message strobe; message ready; "
            "@20000: +46 01 00 01 +64 18 +68 10 +96 01; @20000 512; sleep 8");
  EXPECT_FALSE(property.HasPendingChanges());
  EXPECT_EQ(camera.GetImage()->GetWidth(), 20);
  camera.Stop();
  EXPECT_TRUE(host.TakeLog().starts_with("@20000: +46 02 00 01"));
  for (int n = 0; n < 8; ++n) {
    host.faultAt = n;
    EXPECT_EQ(property.ApplyColorMatrix(), E_FAIL) << n;
    EXPECT_EQ(camera.PrepareCapture(), 0) << "no capture, no buffers";
    EXPECT_EQ(camera.ReadFrame(buffer.data()), 0);
    EXPECT_EQ(camera.ReadFrameAlt(buffer.data()), 0);
  }
}

TEST_F(SataTransport, FramesComeFromTheAreasInTurn) {
  Play();  // 24 x 16 pixels, read as one sector
  const auto read = [&](std::size_t bytes) {
    host.sectors[kAreaA].resize(bytes, 0xA1);
    host.sectors[kAreaB].resize(bytes, 0xB1);
    const LONG result = camera.ReadFrame(buffer.data());
    std::string log = host.TakeLog();
    EXPECT_EQ(result, log.ends_with("sleep 8") ? kReadWithoutFrame : 1) << log;
    return log;
  };
  EXPECT_EQ(read(512), "@200000 512");
  EXPECT_EQ(buffer[0], 0xA1);
  EXPECT_EQ(read(512), "@A00000 512");
  EXPECT_EQ(buffer[0], 0xB1);
  EXPECT_EQ(read(199), "@200000 512; sleep 8") << "below 20 x 10";
  EXPECT_EQ(read(200), "@200000 512");
  host.faultAt = 0;
  EXPECT_EQ(read(512), "sleep 8");
  host.faultAt = 1;
  host.fault = ScriptedDriverHost::Long;
  EXPECT_EQ(read(512), "@A00000 512; sleep 8");
  EXPECT_EQ(read(512), "@A00000 512");
}

TEST_F(SataTransport, ChangesAreAppliedBetweenFrames) {
  Play();
  camera.ReadFrame(buffer.data());
  property.SetDigitalGlobalGain(700);
  EXPECT_EQ(property.SetShutter(1801), E_INVALIDARG);
  property.SetVerMirror(1);
  property.SetHorMirror(1);
  property.MarkPending(0x130);
  host.TakeLog();
  buffer.assign(512, 0);
  const std::string stop = "@20000 512; @20000: +46 02 00 01 +64 18 +68 10 +96 01; sleep 8; ";
  const std::string run = "@20000: +46 01 00 01 +64 18 +68 10 +96 01; @20000 512; sleep 8; ";
  EXPECT_EQ(camera.ReadFrame(buffer.data()), kReadWithoutFrame);
  EXPECT_EQ(host.TakeLog(),
            stop +
                "message window; sleep 8; message sub-sampling; sleep 8; message gain; sleep "
                "8; message rows; sleep 8; message columns; sleep 8; message option; sleep 8; " +
                run + "@A00000 512; sleep 18");
  EXPECT_EQ(buffer[0], 0) << "the frame is thrown away";
  EXPECT_EQ(camera.ReadFrame(buffer.data()), 1);
  EXPECT_EQ(host.TakeLog(), "@200000 512");
  EXPECT_EQ(property.SetShutter(1800), S_OK);
  host.takeWrite = [this](auto, auto data) {
    sector = data;
    sector[44] = 1;
  };
  EXPECT_EQ(camera.ReadFrameAlt(buffer.data()), 1);
  EXPECT_EQ(host.TakeLog(), stop + "message shutter; sleep 8; " + run + "@20000 512; @A00000 512");
}

TEST_F(SataTransport, TheWaitingReadTakesTheAnnouncedArea) {
  Play();
  property.SetTimeout(48);
  const struct {
    std::uint8_t ready;
    const char* log;
    LONG result;
  } rows[] = {{2, "@20000 512; @200000 512", 1},
              {1, "@20000 512; @A00000 512", 1},
              {0, "@20000 512; sleep 16; @20000 512; sleep 16; @20000 512; sleep 16", 0},
              {3, "@20000 512; sleep 16; @20000 512; sleep 16; @20000 512; sleep 16", 0}};
  for (const auto& row : rows) {
    sector[44] = row.ready;
    host.TakeLog();
    EXPECT_EQ(camera.ReadFrameAlt(buffer.data()), row.result);
    EXPECT_EQ(host.TakeLog(), row.log);
  }
  host.sectors[kAreaB].resize(199);
  int announced = 0;
  host.beforeRead = [&](std::uint64_t position, auto& bytes) {
    if (position == kCommand) bytes[44] = static_cast<std::uint8_t>(++announced);
  };
  EXPECT_EQ(camera.ReadFrameAlt(buffer.data()), 1) << "the second one is whole";
  EXPECT_EQ(announced, 2);
  host.beforeRead = [&](auto, auto&) { camera.AbortTransfer(); };
  sector[44] = 0;
  property.SetTimeout(-1);
  EXPECT_EQ(camera.ReadFrameAlt(buffer.data()), 0) << "the end of the capture ends the wait";
}

TEST_F(SataTransport, RegistersOfAnIdleCameraAreReachedAtOnce) {
  LONG value = 77;
  EXPECT_EQ(property.SetRegister(0x35, 1), S_OK);
  EXPECT_EQ(property.GetRegister(0x35, &value), S_OK);
  EXPECT_EQ(host.TakeLog(), "");
  EXPECT_EQ(value, 77);
  Open();
  EXPECT_EQ(property.SetRegister(0x35, 0x31234), S_OK);
  EXPECT_EQ(host.TakeLog(),
            kStop + "; @20000 512; @20000: +34 01 00 35 00 34 12 +46 02; @20000 512; write 35=1234");
  EXPECT_EQ(TakeEvents(), (std::vector<std::vector<LONG>>{{3, S_OK, 0x35, 0x12, 0x34}}));
  sector.assign(512, 0);
  sector[40] = 0xCD;
  sector[41] = 0xAB;
  EXPECT_EQ(property.GetRegister(0x20, &value), S_OK);
  EXPECT_EQ(value, 0xABCD);
  EXPECT_EQ(TakeEvents(), (std::vector<std::vector<LONG>>{{2, S_OK, 0x20, 0xAB, 0xCD}}));
  for (int n = 0; n < 10; ++n) {
    host.faultAt = n;
    EXPECT_EQ(property.SetRegister(9, 8), E_FAIL) << n;
    host.faultAt = n;
    EXPECT_EQ(property.GetRegister(9, &value), E_FAIL) << n;
    EXPECT_EQ(TakeEvents(), (std::vector<std::vector<LONG>>{{3, E_FAIL, 9, 0, 8}, {2, E_FAIL, 9, 0, 0}}));
  }
  EXPECT_EQ(value, 0xABCD);
}

TEST_F(SataTransport, RegistersOfAPlayingCameraAreReachedBetweenFrames) {
  Play();
  LONG value = 77;
  EXPECT_EQ(property.SetRegister(1, 1), S_OK);
  EXPECT_EQ(property.SetRegister(0x35, 0x1234), S_OK);
  EXPECT_EQ(property.GetRegister(0x20, &value), S_OK);
  EXPECT_EQ(host.TakeLog(), "");
  EXPECT_TRUE(TakeEvents().empty());
  host.logTransfers = false;
  camera.ReadFrame(buffer.data());
  EXPECT_EQ(host.TakeLog(), "sleep 8; read 20=0; sleep 8; write 35=1234; sleep 8; sleep 8; sleep 18");
  EXPECT_EQ(TakeEvents(),
            (std::vector<std::vector<LONG>>{{2, S_OK, 0x20, 0, 0}, {3, S_OK, 0x35, 0x12, 0x34}}));
  EXPECT_EQ(value, 77);
  EXPECT_FALSE(property.HasPendingChanges());
}

TEST_F(SataTransport, OnDemandAPictureIsANewOneOrThereIsNone) {
  property.SetOutputFormat(0);
  Play();
  host.logTransfers = false;
  EXPECT_EQ(camera.GetData(nullptr, 0), S_OK);
  EXPECT_EQ(camera.GetImage()->GetBuffer()[0], 0xA1);
  property.SetShutter(1800);
  host.takeWrite = [this](auto, auto) {  // the camera starts anew
    host.sectors[kAreaA].assign(512, 0xA2);
    host.sectors[kAreaB].assign(512, 0xB2);
  };
  EXPECT_EQ(camera.GetData(nullptr, 0), S_OK);
  EXPECT_EQ(camera.GetImage()->GetBuffer()[0], 0xA2) << "the one after the change";
  // Unplugged: every read brings nothing.
  host.beforeRead = [](auto, auto& bytes) { bytes.clear(); };
  property.SetTimeout(100);
  const std::uint64_t start = host.Milliseconds();
  EXPECT_EQ(camera.GetData(nullptr, 0), E_FAIL);
  EXPECT_GE(host.Milliseconds() - start, 100u);
  EXPECT_LE(host.Milliseconds() - start, 120u);
  EXPECT_EQ(camera.GetImage()->GetBuffer()[0], 0xA2);
}

TEST_F(SataTransport, OpensAVolumeByItsLetter) {
  EXPECT_EQ(camera.GetMaxCameraNum(), 26);
  EXPECT_NE(camera.IsSataCamera(), 0);
  EXPECT_EQ(camera.IsCameraValid('E', nullptr), 0);
  EXPECT_EQ(camera.OpenCamera(3), 0);
  EXPECT_EQ(host.TakeLog(), "");
  EXPECT_EQ(camera.OpenCamera('E'), 1);
  EXPECT_EQ(host.TakeLog(), "open \\\\.\\E: C0000000 3");
  EXPECT_EQ(camera.IsCameraConnected(nullptr), 1);
  host.present = [](const auto&) { return false; };
  EXPECT_EQ(camera.IsCameraConnected(nullptr), 0);
  EXPECT_EQ(camera.OpenCamera('F'), 0);
  EXPECT_EQ(property.IsAttached(), false);
  EXPECT_EQ(host.openHandles, 0);
}

}  // namespace
}  // namespace zel
