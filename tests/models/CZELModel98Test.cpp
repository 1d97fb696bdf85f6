#include <gtest/gtest.h>

#include "models/Factory.h"
#include "models/usb3t2/AutoExposure.h"
#include "transport/Fx3DriverHost.h"
#include "transport/usb3t2/CZELDeviceImplUSB3T2.h"
#include "transport/usb3t2/CZELPropertyImplUSB3T2.h"

namespace zel {
namespace {

using test::Fx3DriverHost;
using Property = CZELDevicePropertyImpl;

class CZELModel98 : public testing::Test {
 protected:
  CZELModel98() {
    EXPECT_EQ(camera->OpenCamera(0), 1);
    host.TakeLog();
  }

  /// The accesses to the sensor since the last call.
  std::string Registers() {
    std::string log = host.TakeLog(), found;
    for (std::size_t at = 0; (at = std::min(log.find("write", at), log.find("read", at))) < log.size();) {
      const std::size_t end = std::min(log.find(" (", at), log.size());
      found.append(found.empty() ? "" : "; ").append(log, at, end - at);
      at = end;
    }
    return found;
  }

  Fx3DriverHost host;
  ScopedDriverHost installed{host};
  std::unique_ptr<CZELDevice> created{CreateDeviceForType(98)};
  CZELDeviceImplUSB3T2* camera = dynamic_cast<CZELDeviceImplUSB3T2*>(created.get());
  Property& property = camera->PropertyStore();
};

TEST_F(CZELModel98, IsWhatTheFactoryMakes) {
  EXPECT_EQ(camera->GetCameraType(), 98);
  for (const LONG id : {6, 7, 8, 9, 60, 61})
    EXPECT_EQ(property.Record(id).supported * 10 + property.Record(id).maximum, 11) << id;
  auto& fx3 = dynamic_cast<CZELPropertyImplUSB3T2&>(property);
  LONG target = 0;
  EXPECT_EQ(fx3.GetAeTarget(&target), S_OK);
  EXPECT_EQ(target, 120);
  EXPECT_EQ(fx3.SetAeTarget(200), S_OK);
  EXPECT_EQ(camera->AeTarget(), 200);
}

TEST_F(CZELModel98, SettersProgramTheSensorThenStore) {
  const struct {
    HRESULT (Property::*set)(LONG);
    LONG value;
    unsigned held;  ///< by registers 1E and 20
    const char* registers;
    LONG id, stored;
  } rows[] = {
      {&Property::SetShutter, 0x1234, 0, "write 9=1234; write 8=0", 13, 0x1234},
      {&Property::SetShutter, 20000, 0, "write 9=3FFF; write 8=0", 13, 16383},
      {&Property::SetShutter, -5, 0, "write 9=0; write 8=0", 13, 0},
      {&Property::SetDigitalGlobalGain, 40, 0, "write 35=28", 12, 40},
      {&Property::SetDigitalGlobalGain, 64, 0, "write 35=3F", 12, 63},
      {&Property::SetDigitalGlobalGain, -1, 0, "write 35=0", 12, 0},
      {&Property::SetVerMirror, 1, 0x0018, "read 20=18; write 20=8018", 7, 1},
      {&Property::SetHorMirror, 1, 0x8000, "read 20=8000; write 20=C000", 6, 1},
      {&Property::SetHorMirror, 0, 0xFFFF, "read 20=FFFF; write 20=BFFF", 6, 0},
      {&Property::SetExtTrigger, 1, 0x8040, "read 1E=8040; write 1E=8140", 8, 1},
      {&Property::SetExtTrigger, 0, 0xFFFF, "read 1E=FFFF; write 1E=FEFF", 8, 0},
      {&Property::SetHalfClock, 1, 0, "", 9, 1},
  };
  for (const auto& row : rows) {
    const LONG before = property.Record(row.id).current;
    const int transfers = row.registers[0] == 'r' ? 3 : row.id == 13 ? 2 : row.id == 12 ? 1 : 0;
    for (int n = 0; n < transfers; ++n) {
      host.faultAt = n;
      EXPECT_EQ((property.*row.set)(row.value), E_FAIL) << row.registers << n;
      EXPECT_EQ(property.Record(row.id).current, before) << row.registers << n;
    }
    host.registers[0x1E] = host.registers[0x20] = row.held;
    host.TakeLog();
    EXPECT_EQ((property.*row.set)(row.value), S_OK) << row.registers;
    EXPECT_EQ(Registers(), row.registers);
    EXPECT_EQ(property.Record(row.id).current, row.stored) << row.registers;
  }
  LONG value = 0;
  EXPECT_EQ(property.GetHalfClock(&value), S_OK);
  EXPECT_EQ(value, 1);
  camera->CloseDevice(0);
  EXPECT_EQ(property.SetExtTrigger(1), E_FAIL);
  EXPECT_EQ(property.SetHalfClock(0), E_FAIL);
}

TEST_F(CZELModel98, PreparationSizesTheFrameAndProgramsTheWindow) {
  // clang-format off
  const struct {
    LONG x, y, width, height, code, frameBytes;
    const char* window;
  } rows[] = {
      {0, 0, 3096, 2080, 0, 14237696, "write 1E=C3C3; write 20=C000; write A=1; write 1=C; write 2=14; write 3=81F; write 4=C17"},
      {100, 50, 640, 480, 0, 933888,  "write 1E=C3C3; write 20=C000; write A=1; write 1=3E; write 2=78; write 3=1DF; write 4=27F"},
      {0, 0, 3096, 2080, 1, 3915776,  "write 1E=C3C3; write 20=C018; write A=1; write 1=C; write 2=14; write 3=40F; write 4=60B"},
      {0, 0, 3096, 2080, 2, 1171456,  "write 1E=C3CF; write 20=C000; write A=1; write 1=C; write 2=14; write 3=207; write 4=305"},
      {0, 0, 3096, 2080, 3, 401408,   "write 1E=C3F3; write 20=C000; write A=1; write 1=C; write 2=14; write 3=103; write 4=182"},
  };
  // clang-format on
  property.SetHalfClock(1);
  for (const auto& row : rows) {
    host.registers = {{0x1E, 0xC3FF}, {0x20, 0xC018}};
    property.SetProperty(kSubSampleX, row.code);
    EXPECT_EQ(property.SetROI(row.x, row.y, row.width, row.height), S_OK);
    camera->PrepareCapture();
    EXPECT_EQ(Registers(), std::string("read 1E=C3FF; read 20=C018; ") + row.window);
    const Usb3T2Frame& frame = camera->Frame();
    const LONG width = row.width >> row.code, height = row.height >> row.code;
    EXPECT_EQ(std::vector({frame.frameBytes, frame.lineBytes, frame.frameWidth, frame.frameHeight}),
              (std::vector{row.frameBytes, width, width, height}));
  }
  camera->SetBufferSamples(kDeliverOnDemand);
  std::vector<std::uint8_t> buffer(3915776);
  for (int n = 0; n < 24; ++n) {  // each of the preparation's transfers
    camera->Stop();
    host.faultAt = n;
    camera->Play();
    EXPECT_FALSE(host.faultAt) << n;
    EXPECT_EQ(camera->ReadFrame(buffer.data()), 0) << n;
  }
  property.SetProperty(kSubSampleX, 0);
  property.SetProperty(kRoiLeft, 1);
  host.TakeLog();
  EXPECT_EQ(camera->PrepareCapture(), 0);
  EXPECT_EQ(Registers(), "") << "a window beside the sensor";
  EXPECT_EQ(camera->Frame().frameBytes, 0);
}

TEST(AutoExposure, NextStep) {
  const struct {
    LONG target, mean;
    Exposure now, next;
  } rows[] = {{120, 117, {500, 20}, {500, 20}},    {120, 123, {500, 20}, {500, 20}},
              {120, 116, {500, 20}, {504, 21}},    {120, 124, {500, 20}, {496, 19}},
              {120, 111, {500, 20}, {504, 21}},    {120, 110, {500, 20}, {508, 22}},
              {120, 96, {500, 20}, {508, 22}},     {120, 95, {500, 20}, {525, 23}},
              {120, 71, {500, 20}, {525, 23}},     {120, 170, {500, 20}, {450, 15}},
              {120, 219, {500, 20}, {450, 15}},    {120, 220, {500, 20}, {400, 10}},
              {120, 1, {500, 20}, {600, 30}},      {120, 0, {500, 20}, {650, 35}},
              {130, 0, {1900, 59}, {2000, 60}},    {120, 150, {80, 12}, {80, 10}},
              {120, 150, {16383, 63}, {2000, 60}}, {120, 116, {0, 0}, {80, 10}},
              {120, 120, {16383, 63}, {16383, 63}}};
  for (const auto& row : rows) {
    const Exposure next = NextExposure({}, row.target, row.mean, row.now);
    EXPECT_EQ(next, row.next) << row.mean << ": " << next.shutter << ' ' << next.gain;
  }
}

TEST(AutoExposure, MeanOfTheCentreNinth) {
  // 10 x 8: columns 3 to 5 of rows 2 and 3.
  std::vector<unsigned char> picture(80, 255);
  for (const std::size_t row : {2, 3}) {
    for (const std::size_t column : {3, 4, 5})
      picture[row * 10 + column] = static_cast<unsigned char>(20 * row);
  }
  picture[23] = 44;
  EXPECT_EQ(CentreMean({picture.data(), 10, 8, 1}), 50);
  picture[23] = 45;
  EXPECT_EQ(CentreMean({picture.data(), 10, 8, 1}), 50) << "50.8";
  std::vector<unsigned char> wide;
  for (const unsigned char sample : picture) {
    wide.push_back(static_cast<unsigned char>(sample << 2 | 3));
    wide.push_back(static_cast<unsigned char>(sample >> 6));
  }
  EXPECT_EQ(CentreMean({wide.data(), 10, 8, 2}), 50);
}

TEST_F(CZELModel98, ExposureControlChangesOneSettingPerFrame) {
  property.SetROI(0, 0, 30, 30);
  camera->SetBufferSamples(kDeliverOnDemand);
  ASSERT_EQ(camera->Play(), 1);
  host.SetImage(900);
  std::vector<std::uint8_t> buffer(static_cast<std::size_t>(camera->Frame().frameBytes));
  const struct {
    LONG exposure, gain;  ///< switched on
    LONG target, mean, nowShutter, nowGain;
    const char* registers;
  } rows[] = {
      {0, 0, 120, 0, 500, 20, ""},
      {1, 1, 120, 117, 500, 20, ""},
      {1, 1, 120, 116, 500, 20, "write 9=1F8; write 8=0"},
      {0, 1, 120, 116, 500, 20, "write 35=15"},
      {1, 0, 130, 0, 1900, 20, "write 9=7D0; write 8=0"},
      {1, 0, 130, 0, 2000, 20, ""},
      {1, 1, 120, 150, 80, 20, "write 35=11"},
      {1, 1, 120, 150, 80, 12, "write 35=A"},
      {1, 1, 120, 150, 80, 10, ""},
  };
  for (const auto& row : rows) {
    host.image = [&](std::size_t) { return static_cast<std::uint8_t>(row.mean); };
    property.SetAuxValue3(row.exposure);
    property.SetAuxValue4(row.gain);
    property.SetShutter(row.nowShutter);
    property.SetDigitalGlobalGain(row.nowGain);
    camera->SetAeTarget(row.target);
    host.TakeLog();
    EXPECT_EQ(camera->ReadFrame(buffer.data()), 1);
    EXPECT_EQ(Registers(), row.registers);
    host.faultAt = 3;  // the first register after start, header and image
    EXPECT_EQ(camera->ReadFrame(buffer.data()), 1) << "the camera's refusal is not the frame's";
    host.faultAt = 2;
    host.TakeLog();
    EXPECT_EQ(camera->ReadFrame(buffer.data()), 0);
    EXPECT_EQ(Registers(), "");
    host.faultAt.reset();
  }
}

}  // namespace
}  // namespace zel
