#include <gtest/gtest.h>

#include "models/Factory.h"
#include "transport/ScriptedDriverHost.h"
#include "transport/usb/CZELDeviceImplUSB.h"
#include "transport/usb/CZELDevicePropertyImplUSB.h"

namespace zel {
namespace {

class CZELModel13 : public testing::Test {
 protected:
  CZELModel13() {
    EXPECT_EQ(camera->OpenCamera(0), 1);
    host.TakeLog();
  }

  /// For settings that this type does not offer.
  PropertyRecord& Edit(LONG id) { return const_cast<PropertyRecord&>(property.Record(id)); }
  /// The sensor registers that are reached from the last call on.
  std::string Registers() {
    host.logTransfers = false;
    return host.TakeLog();
  }

  test::ScriptedDriverHost host;
  ScopedDriverHost installed{host};
  std::unique_ptr<CZELDevice> created{CreateDeviceForType(13)};
  CZELDeviceImplUSB* camera = dynamic_cast<CZELDeviceImplUSB*>(created.get());
  CZELDevicePropertyImpl& property = camera->PropertyStore();
  std::vector<std::uint8_t> buffer = std::vector<std::uint8_t>(1556480);
};

TEST_F(CZELModel13, IsWhatTheFactoryMakes) {
  EXPECT_EQ(camera->GetCameraType(), 13);
  EXPECT_EQ(CreateDeviceForType(99), nullptr);
  EXPECT_EQ(CreateDeviceForType(4294967295u), nullptr);
  for (const LONG id : {6, 7, 8, 9, 26}) {
    const PropertyRecord& record = property.Record(id);
    EXPECT_EQ(std::vector({record.minimum, record.maximum, record.current, record.supported}),
              (std::vector<LONG>{0, 1, 0, 1}));
  }
  camera->IsCameraConnected(nullptr);
  EXPECT_EQ(host.TakeLog(), "open \\\\.\\ZelUsbBD-0 40000000 2");
  created.reset();
  EXPECT_EQ(host.openHandles, 0);
}

TEST_F(CZELModel13, FrameArithmetic) {
  const std::vector<LONG> rows[] = {
      // width, height, lineLength, frameClocks, expectedBytes
      {308, 100, 553, 56320, 54272},   {309, 100, 553, 56320, 54272},
      {310, 100, 554, 56320, 55296},   {541, 3, 785, 3072, 1024},  // exactly 1024 bytes, not rounded up
      {641, 479, 885, 424960, 421888}, {1280, 1024, 1524, 1561600, 1556480},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(property.SetROI(0, 0, row[0], row[1]), S_OK);
    EXPECT_EQ(camera->PrepareCapture(), 1);
    const UsbFrame& f = camera->Frame();
    EXPECT_EQ(std::vector({f.roiWidth, f.roiHeight, f.lineLength, f.frameClocks, f.expectedBytes}), row);
    EXPECT_EQ(f.frameExtra, 241);
    host.TakeLog();
    EXPECT_EQ(camera->ReadFrame(buffer.data()), 1);
    EXPECT_EQ(host.TakeLog(), "22204E : 02 -> 64; 2220A9 02 -> " + std::to_string(row[4]));
  }
}

TEST_F(CZELModel13, WindowsThatCantBeCaptured) {
  constexpr LONG kMost = 0x7FFFFFFF;
  const std::array<LONG, 4> windows[] = {{0, 0, 0, 1024},        {0, 0, 1280, -1},   {0, 0, kMost, kMost},
                                         {kMost, kMost, 4, 4},   {-1, 0, 4, 3},      {0, 0, 1280, 1},
                                         {0, 0, -kMost - 1, 4},  {1277, 0, 4, 3},    {0, 1022, 4, 3},
                                         {kMost, 0, kMost, 100}, {0, 0, 1280, kMost}};
  for (const auto& [x, y, width, height] : windows) {
    property.SetROI(0, 0, 8, 8);
    EXPECT_EQ(camera->PrepareCapture(), 1);
    EXPECT_EQ(property.SetROI(x, y, width, height), S_OK);
    host.TakeLog();
    EXPECT_EQ(camera->PrepareCapture(), 0) << x << ' ' << y << ' ' << width << ' ' << height;
    EXPECT_EQ(camera->ReadFrame(buffer.data()), 0);
    EXPECT_EQ(host.TakeLog(), "");
  }
}

TEST_F(CZELModel13, PreparationFromTheSensorToTheTransfer) {
  host.registers = {{0x1E, 0xFFFF}, {0x20, 0xFFFF}};
  property.SetROI(100, 50, 640, 480);
  camera->SetBufferSamples(kDeliverOnDemand);
  EXPECT_EQ(camera->Play(), 1);
  EXPECT_EQ(host.TakeLog(),
            "> 0C 1E; <; <; read 1E=FFFF; > 0C 20; <; <; read 20=FFFF; > 04 1E FF C3; write 1E=FFC3; "
            "> 04 20 FF E7; write 20=FFE7; > 04 01 00 3E; write 1=3E; > 04 02 00 78; write 2=78; "
            "> 04 03 01 DF; write 3=1DF; > 04 04 02 7F; write 4=27F; > 0A; > 09 00 70 06");
  EXPECT_EQ(property.Settings().rawLayout, (std::array<LONG, 4>{120, 62, 639, 479}));
  for (int n = 0; n < 12; ++n) {  // the sensor's transfers
    host.faultAt = n;
    EXPECT_EQ(camera->PrepareCapture(), 0) << n;
    EXPECT_EQ(camera->ReadFrame(buffer.data()), 0) << n;
  }
}

TEST_F(CZELModel13, SubSampling) {
  const struct {
    LONG code;
    const char *fromZeros, *fromOnes;
    std::vector<LONG> roi;
  } rows[] = {{0, "1E=0; write 20=0;", "1E=FFC3; write 20=FFE7;", {32, 16, 640, 480}},
              {1, "1E=0; write 20=18;", "1E=FFC3; write 20=FFFF;", {0, 0, 640, 512}},
              {2, "1E=C; write 20=0;", "1E=FFFF; write 20=FFE7;", {0, 0, 320, 256}},
              {3, "1E=30; write 20=0;", "1E=FFFF; write 20=FFE7;", {0, 0, 160, 128}},
              {4, "1E=0; write 20=0;", "1E=FFC3; write 20=FFE7;", {0, 0, 1280, 1024}}};
  for (const auto& row : rows) {
    Edit(kSubSampleX).current = row.code;
    for (const bool ones : {false, true}) {
      host.registers[0x1E] = host.registers[0x20] = ones ? 0xFFFF : 0;
      property.SetROI(32, 16, 640, 480);
      Registers();
      EXPECT_EQ(camera->PrepareCapture(), 1);
      EXPECT_NE(Registers().find(std::string("write ") + (ones ? row.fromOnes : row.fromZeros)),
                std::string::npos)
          << row.code;
    }
    std::vector<LONG> roi(4);
    EXPECT_EQ(property.GetROI(&roi[0], &roi[1], &roi[2], &roi[3]), 1);
    EXPECT_EQ(roi, row.roi);
    EXPECT_EQ(property.Record(kRoiWidth).current, row.code > 0 ? 1280 : 640);
  }
}

TEST_F(CZELModel13, SettersProgramTheSensorThenStore) {
  using P = CZELDevicePropertyImpl;
  const struct {
    HRESULT (P::*set)(LONG);
    LONG value;
    std::uint16_t held;  ///< by every register
    const char* registers;
    HRESULT result;
    LONG id, stored;
  } rows[] = {
      {&P::SetDigitalGlobalGain, 100, 0, "write 35=64", S_OK, 12, 100},
      {&P::SetDigitalGlobalGain, 200, 0, "write 35=48", E_INVALIDARG, 12, 100},
      {&P::SetDigitalGlobalGain, 1029, 0, "write 35=5", S_OK, 12, 5},
      {&P::SetShutter, 1000, 0, "write 9=3E8", S_OK, 13, 1000},
      {&P::SetShutter, 0x4001, 0, "write 9=1", S_OK, 13, 1},
      {&P::SetVerMirror, 1, 0x0080, "read 20=80; write 20=8080", S_OK, 7, 1},
      {&P::SetVerMirror, 0, 0xFFFF, "read 20=FFFF; write 20=7F7F", S_OK, 7, 0},
      {&P::SetHorMirror, 1, 0x8000, "read 20=8000; write 20=C000", S_OK, 6, 1},
      {&P::SetHorMirror, 0, 0xFFFF, "read 20=FFFF; write 20=BFFF", S_OK, 6, 0},
      {&P::SetExtTrigger, 1, 0x8040, "read 1E=8040; write 1E=8140", S_OK, 8, 1},
      {&P::SetExtTrigger, 0, 0xFFFF, "read 1E=FFFF; write 1E=FEFF", S_OK, 8, 0},
      {&P::SetAutoThresh, 1, 0x0100, "read 5F=100; write 5F=180", S_OK, 26, 1},
      {&P::SetAutoThresh, 0, 0xFFFF, "read 5F=FFFF; write 5F=FF7F", S_OK, 26, 0},
  };
  for (const auto& row : rows) {
    for (const std::uint8_t address : {0x1E, 0x20, 0x5F}) host.registers[address] = row.held;
    const LONG before = property.Record(row.id).current;
    for (int n = 0; n < (row.registers[0] == 'r' ? 4 : 1); ++n) {
      host.faultAt = n;
      EXPECT_EQ((property.*row.set)(row.value), E_FAIL) << row.registers;
      EXPECT_EQ(property.Record(row.id).current, before) << row.registers;
    }
    Registers();
    EXPECT_EQ((property.*row.set)(row.value), row.result) << row.registers;
    EXPECT_EQ(Registers(), row.registers);
    EXPECT_EQ(property.Record(row.id).current, row.stored) << row.registers;
  }
  camera->CloseDevice(0);
  EXPECT_EQ(property.SetExtTrigger(1), E_FAIL);
}

TEST_F(CZELModel13, GettersAskTheSensor) {
  using P = CZELDevicePropertyImpl;
  const struct {
    HRESULT (P::*get)(LONG*);
    std::uint8_t address;
    std::uint16_t held;
    LONG id, value;
  } rows[] = {{&P::GetDigitalGlobalGain, 0x35, 0xFFE4, 12, 0x64},
              {&P::GetExtTrigger, 0x1E, 0x0100, 8, 1},
              {&P::GetExtTrigger, 0x1E, 0xFEFF, 8, 0},
              {&P::GetAutoThresh, 0x5F, 0x0080, 26, 1},
              {&P::GetAutoThresh, 0x5F, 0xFF7F, 26, 0}};
  for (const auto& row : rows) {
    host.registers[row.address] = row.held;
    host.faultAt = 2;
    LONG value = -1;
    EXPECT_EQ((property.*row.get)(&value), E_FAIL);
    EXPECT_EQ(value, -1);
    EXPECT_EQ((property.*row.get)(&value), S_OK);
    EXPECT_EQ(value, row.value);
    EXPECT_EQ(property.Record(row.id).current, row.value);
  }
}

TEST_F(CZELModel13, AuxiliaryOutputKeepsTheOtherLine) {
  const struct {
    std::uint8_t inputs;
    LONG on;
    const char* log;
    LONG read;
  } rows[] = {{0x00, 1, "> 29; <; sleep 30; <; > 28 20", 0},
              {0x18, 1, "> 29; <; sleep 30; <; > 28 60", 1},
              {0x18, 0, "> 29; <; sleep 30; <; > 28 40", 1},
              {0xEF, 5, "> 29; <; sleep 30; <; > 28 20", 1}};
  for (const auto& row : rows) {
    host.reply = std::vector{row.inputs};
    host.TakeLog();
    EXPECT_EQ(property.SetAuxValue3(row.on), S_OK);
    EXPECT_EQ(host.TakeLog(), row.log);
    LONG value = -1;
    EXPECT_EQ(property.GetAuxValue3(&value), S_OK);
    EXPECT_EQ(value, row.read);
  }
}

TEST_F(CZELModel13, BayerPhaseOfEveryWindowAndMirror) {
  constexpr LONG kNextRow[] = {1, 0, 2, 1};
  constexpr LONG kNextColumn[] = {2, 3, 0, 1};
  for (int n = 0; n < 4 * 64; ++n) {
    const auto bit = [&](int k) { return (n >> (k + 2)) & 1; };
    const_cast<PlainSettings&>(property.Settings()).baseBayerPhase = n & 3;
    property.SetROI(100 + bit(0), 50 + bit(1), 640 + bit(2), 480 + bit(3));
    Edit(kHorMirror).current = bit(4);
    Edit(kVerMirror).current = bit(5);
    LONG phase = n & 3;
    if (bit(1) == 1) phase = kNextRow[phase];
    if (bit(5) == 1 && bit(3) == 0) phase = kNextRow[phase];
    if (bit(4) == 1 && bit(2) == 0) phase = kNextColumn[phase];
    if (bit(0) == 1) phase = kNextColumn[phase];
    EXPECT_EQ(property.UpdateDerivedSizes(), phase) << n;
  }
}

}  // namespace
}  // namespace zel
