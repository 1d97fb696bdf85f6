#include <gtest/gtest.h>

#include "models/Factory.h"
#include "transport/ScriptedDriverHost.h"
#include "transport/wom/CZELDeviceImplWOM.h"
#include "transport/wom/CZELDevicePropertyImplWOM.h"

namespace zel {
namespace {

using Property = CZELDevicePropertyImpl;
using test::ScriptedDriverHost;

class CZELModel67 : public testing::Test {
 protected:
  void Open() {
    ASSERT_EQ(camera->OpenCamera(3), 1);
    EXPECT_EQ(host.TakeLog(), "open \\\\.\\ZelWomGH-3 40000000 2; > 06; open \\\\.\\ZelWomGH-3 40000000 2");
  }

  ScriptedDriverHost host;
  ScopedDriverHost installed{host};
  std::unique_ptr<CZELDevice> created{CreateDeviceForType(67)};
  CZELDeviceImplWOM* camera = dynamic_cast<CZELDeviceImplWOM*>(created.get());
  Property& property = camera->PropertyStore();
};

// clang-format off
const struct WireCase {
  const char* log;
  int transfers;  ///< that the result depends on
  std::vector<std::uint8_t> reply;
  LONG value;     ///< that a getter finds
  HRESULT (*run)(Property&, LONG*);
} kWireCases[] = {
    {"> 25 0E 34",                           1, {}, 0, [](Property& p, LONG*) { return p.SetFpgaRegister(0x0E, 0x1234); }},
    {"> 26 80; <; <",                        3, {0x34, 0x12}, 0x34, [](Property& p, LONG* v) { return p.GetFpgaRegister(0x80, v); }},
    {"> 25 0F 05; > 0A 01; > 25 0E",         0, {}, 0, [](Property& p, LONG*) { return p.SetHalfClock(5); }},
    {"> 25 0F; > 0A 01; > 25 0E",            0, {}, 0, [](Property& p, LONG*) { return p.SetHalfClock(6); }},
    {"> 25 0F; > 0A 01; > 25 0E",            0, {}, 0, [](Property& p, LONG*) { return p.SetHalfClock(-1); }},
    {"> 26 0F; <; <",                        0, {3}, 3, [](Property& p, LONG* v) { return p.GetHalfClock(v); }},
    {"> 26 80; <; <",                        0, {0x77}, 0x77, [](Property& p, LONG* v) { return p.GetMark(v); }},
    {"> 04 09 7F FF; write 9=7FFF",          1, {}, 0, [](Property& p, LONG*) { return p.SetShutter(40000); }},
    {"> 04 09; write 9=0",                   1, {}, 0, [](Property& p, LONG*) { return p.SetShutter(-5); }},
    {"> 04 35 00 3F; write 35=3F",           1, {}, 0, [](Property& p, LONG*) { return p.SetDigitalGlobalGain(200); }},
    {"> 04 35 00 01; write 35=1",            1, {}, 0, [](Property& p, LONG*) { return p.SetDigitalGlobalGain(0); }},
    {"> 0C 20; <; <; read 20=80; > 04 20 80 80; write 20=8080", 4, {0, 0x80}, 0, [](Property& p, LONG*) { return p.SetVerMirror(1); }},
    {"> 0C 20; <; <; read 20=80; > 04 20 40 80; write 20=4080", 4, {0, 0x80}, 0, [](Property& p, LONG*) { return p.SetHorMirror(1); }},
    {"> 0C 1E; <; <; read 1E=80; > 04 1E 01 80; write 1E=180",  4, {0, 0x80}, 0, [](Property& p, LONG*) { return p.SetExtTrigger(1); }},
};
// clang-format on

TEST_F(CZELModel67, EveryOperationSendsItsBytesAndKeepsItsValueWhenTheyFail) {
  Open();
  for (const WireCase& row : kWireCases) {
    host.reply = row.reply;
    LONG value = 0;
    EXPECT_EQ(row.run(property, &value), S_OK) << row.log;
    EXPECT_EQ(value, row.value) << row.log;
    EXPECT_EQ(host.TakeLog(), row.log);
    for (int n = 0; n < row.transfers; ++n) {
      property.SetHorMirror(0);
      property.SetVerMirror(0);
      const LONG shutter = property.Record(kShutter).current;
      const LONG gain = property.Record(kDigitalGlobalGain).current;
      host.faultAt = n;
      EXPECT_EQ(row.run(property, &value), E_FAIL) << row.log << ", transfer " << n;
      EXPECT_EQ(property.Record(kShutter).current, shutter);
      EXPECT_EQ(property.Record(kDigitalGlobalGain).current, gain);
      EXPECT_EQ(property.Record(kHorMirror).current + property.Record(kVerMirror).current, 0);
    }
    host.TakeLog();
  }
  host.faultAt = 0;
  LONG mark = 7;
  EXPECT_EQ(property.GetMark(&mark), S_OK) << "a failed read is no error";
  EXPECT_EQ(mark, 7);
}

TEST_F(CZELModel67, SerialNumber) {
  unsigned char text[9] = "ab\0cd123";
  EXPECT_EQ(property.SetSerialNum(text), E_FAIL) << "not attached";
  Open();
  EXPECT_EQ(property.SetSerialNum(text), S_OK);
  EXPECT_EQ(
      host.TakeLog(),
      "> 20 1F F7 61; sleep 10; > 20 1F F8 62; sleep 10; > 20 1F F9; sleep 10; > 20 1F FA 63; sleep 10; "
      "> 20 1F FB 64; sleep 10; > 20 1F FC 31; sleep 10; > 20 1F FD 32; sleep 10; > 20 1F FE 33; sleep 10");
  host.reply = {{0x39}};
  EXPECT_EQ(property.GetSerialNum(text), S_OK);
  EXPECT_STREQ(reinterpret_cast<const char*>(text), "99999999");
  EXPECT_TRUE(host.TakeLog().ends_with("> 21 1F FE; <; <"));
  host.faultAt = 20;
  EXPECT_EQ(property.GetSerialNum(text), E_FAIL);
  host.faultAt = 7;
  EXPECT_EQ(property.SetSerialNum(text), E_FAIL);
}

TEST_F(CZELModel67, PreparationFromTheSensorToTheFpga) {
  Open();
  const struct {
    LONG width, height, subSampling, transfer;
    const char* modes;
  } rows[] = {{1280, 1024, 0, 1310720, "write 1E=FFC0; write 20=FFE0"},
              {1279, 1023, 0, 1308672, "write 1E=FFC0; write 20=FFE0"},
              {1280, 1024, 1, 327680, "write 1E=FFC0; write 20=FFF8"},
              {1280, 1024, 2, 81920, "write 1E=FFFC; write 20=FFE0"}};
  host.registers = {{0x1E, 0xFFFF}, {0x20, 0xFFFF}};
  for (const auto& row : rows) {
    EXPECT_EQ(property.SetROI(0, 0, row.width, row.height), S_OK);
    EXPECT_EQ(property.SetSubSampleX(row.subSampling), S_OK);
    host.logTransfers = false;
    host.TakeLog();
    camera->SetBufferSamples(kDeliverOnDemand);
    EXPECT_EQ(camera->Play(), 1);
    EXPECT_EQ(camera->Frame().expectedBytes, row.transfer);
    EXPECT_TRUE(host.TakeLog().ends_with(row.modes)) << row.width;
    EXPECT_EQ(camera->Stop(), 1);
  }
  host.logTransfers = true;
  EXPECT_EQ(property.SetSubSampleX(0), S_OK);
  EXPECT_EQ(property.SetROI(100, 50, 640, 480), S_OK);
  property.SetTransMode(1);
  host.TakeLog();
  EXPECT_EQ(camera->Play(), 1);
  EXPECT_EQ(host.TakeLog(),
            "> 0C 1E; <; <; read 1E=FFFF; > 0C 20; <; <; read 20=FFFF; > 04 01 00 3E; write 1=3E; "
            "> 04 02 00 78; write 2=78; > 04 03 01 DF; write 3=1DF; > 04 04 02 7F; write 4=27F; "
            "> 04 1E FF C0; write 1E=FFC0; > 04 20 FF E0; write 20=FFE0; "
            "> 0A 01; > 25 0E 01; > 25; > 25 01 B0; > 25 02 04; > 25 03");
  std::vector<std::uint8_t> buffer(2 * 640 * 480);
  EXPECT_EQ(camera->ReadFrame(buffer.data()), 1);
  EXPECT_EQ(host.TakeLog(), "22204E : 02 -> 64; 2220A9 02 -> 614400");
  for (int n = 0; n < 18; ++n) {
    host.faultAt = n;
    EXPECT_EQ(camera->PrepareCapture(), 0) << n;
    host.faultAt = std::nullopt;
  }
}

}  // namespace
}  // namespace zel
