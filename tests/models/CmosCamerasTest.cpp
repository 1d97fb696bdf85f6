// What single CMOS types do beyond their settings' registers.
#include <gtest/gtest.h>

#include "models/ModelExpectations.h"
#include "models/OpenedCamera.h"
#include "sim/FrameCode.h"
#include "sim/SensorMap.h"

namespace zel {
namespace {

using test::OpenedCamera;

/// The sensor's window, read modes, clock and trigger, as every capture sets them.
TEST(CmosCameras, PreparationProgramsTheWindow) {
  const struct {
    LONG type;
    std::array<LONG, 4> roi;
    test::Setter switchedOn;  ///< none: null
    LONG subSampling;
    const char* registers;
  } rows[] = {
      {28,
       {100, 50, 640, 480},
       nullptr,
       0,
       "read 1E=0; read 20=0; write 1E=0; write 20=0; write 1=3E; write 2=78; write 3=1DF; write 4=27F"},
      {32,
       {100, 50, 640, 480},
       test::kVerMirrorSetter,
       0,
       "write 344=64; write 346=32; write 34C=280; write 34E=1E0; write 3040=8041; write 200=0; "
       "write 202=64; read 3160=0; write 3160=0"},
      {36,
       {10, 20, 100, 200},
       nullptr,
       0,
       "write 1=15; write 2=E; write 3=64; write 4=C8; read D=0; write D=0"},
      {45,
       {16, 8, 640, 480},
       test::kHorMirrorSetter,
       0,
       "read 1E=0; read 20=4000; write 1E=0; write 20=4000; write 1=14; write 2=24; write 3=1DF; "
       "write 4=27F; read 35=E; write 35=E; read 9=64; write 9=64"},
      {59,
       {0, 0, 2048, 1536},
       nullptr,
       2,
       "read 1E=0; read 20=0; write 1=C; write 2=14; write 3=17F; write 4=1FF; write 1E=C; write 20=0"},
      {63,
       {0, 0, 752, 480},
       nullptr,
       1,
       "write 1=1; write 2=4; write 3=F0; write 4=178; read D=0; write D=5"},
      {68,
       {300, 2, 640, 480},
       nullptr,
       0,
       "write 10=2C; write 11=1; write 12=2; write 13=0; write 14=80; write 15=2; write 16=E0; write 17=1; "
       "write 18=0"},
      {87,
       {0, 0, 1280, 720},
       test::kTriggerSetter,
       1,
       "write 344=0; write 346=0; write 34C=280; write 34E=168; write 3040=C3; read 301A=100; "
       "write 301A=100"},
      {91,
       {0, 0, 3856, 2764},
       test::kHalfClockSetter,
       2,
       "write 344=0; write 346=0; write 34C=3C4; write 34E=2B3; write 3040=1C7; write 302=2; write 30A=2"},
      {96,
       {300, 2, 640, 480},
       test::kHalfClockSetter,
       3,
       "write 3E=2C; write 3F=1; write 3A=2; write 3B=0; write 40=50; write 41=0; write 3C=3C; write 3D=0; "
       "write 6=3; write B=1"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.type);
    OpenedCamera camera(row.type);
    camera.Property().SetROI(row.roi[0], row.roi[1], row.roi[2], row.roi[3]);
    const auto code = camera.Property().SetSubSampleX(row.subSampling);
    EXPECT_TRUE(code == S_OK || row.subSampling == 0);
    if (row.switchedOn != nullptr) {
      EXPECT_EQ((camera.Property().*row.switchedOn)(1), S_OK);
    }
    camera.TakeLog();
    EXPECT_TRUE(camera.Plays());
    EXPECT_EQ(camera.TakeLog(), row.registers);
  }
}

TEST(CmosCameras, SubSampledPicturesHaveTheirSize) {
  for (const LONG type : {32, 44, 51, 59, 63, 65, 68, 69, 70, 86, 87, 89, 90, 96, 97}) {
    OpenedCamera camera(type);
    for (LONG code = 1; code <= *ModelOf(type).subSampling; ++code) {
      SCOPED_TRACE(testing::Message() << "type " << type << ", code " << code);
      EXPECT_EQ(camera.Property().SetSubSampleX(code), S_OK);
      EXPECT_TRUE(camera.Prepares());
      ASSERT_TRUE(camera.Plays());
      EXPECT_EQ(camera.Device().GetImage()->GetWidth(), ModelOf(type).full.width >> code);
      EXPECT_EQ(camera.Device().GetImage()->GetHeight(), ModelOf(type).full.height >> code);
      camera.Device().Stop();
    }
    EXPECT_EQ(camera.ProtocolErrors(), std::vector<std::string>());
  }
}

/// Its bars lie at the top and the bottom once the frame is turned.
TEST(CmosCameras, TheSensorOnItsSideGivesUprightPictures) {
  OpenedCamera camera(36);
  for (const LONG transferMode : {0, 1}) {
    camera.Property().SetTransMode(transferMode);
    ASSERT_TRUE(camera.Plays());
    std::vector<std::uint8_t> raw(std::size_t{480} * 752 * 2 + 2048);
    ASSERT_EQ(camera.Device().ReadFrame(raw.data()), 1);
    const LONG sampleBytes = transferMode + 1;
    const auto number = [&] {
      return ReadFrameNumber(raw.data(), 480, 752, 480 * sampleBytes, sampleBytes).value_or(0);
    };
    EXPECT_EQ(number(), 0u) << "as the sensor sends it";
    camera.Device().OnFrameHook(raw.data());
    EXPECT_EQ(number(), 1u);
    camera.Device().Stop();
  }
}

TEST(CmosCameras, RowsBeyondTheTransferAreCompleted) {
  for (const LONG type : {34, 48}) {
    for (const LONG sampleBytes : {1, 2}) {
      SCOPED_TRACE(testing::Message() << "type " << type << ", " << sampleBytes);
      OpenedCamera camera(type);
      camera.Property().SetTransMode(sampleBytes - 1);
      camera.Property().SetROI(0, 200, 1440, 6);  // (1684 - 2) x 4 + 241: four whole rows arrive
      ASSERT_TRUE(camera.Plays());
      const std::size_t rowBytes = static_cast<std::size_t>(1440 * sampleBytes);
      std::vector<std::uint8_t> raw(8 * rowBytes);
      ASSERT_EQ(camera.Device().ReadFrame(raw.data()), 1);
      const auto row = [&](std::size_t n) {
        const auto start = raw.begin() + static_cast<std::ptrdiff_t>(n * rowBytes);
        return std::vector(start, start + static_cast<std::ptrdiff_t>(rowBytes));
      };
      const auto second = row(2), third = row(3);
      EXPECT_NE(row(5), third);
      camera.Device().OnFrameHook(raw.data());
      EXPECT_EQ(row(2), second);
      EXPECT_EQ(row(4), second);
      EXPECT_EQ(row(5), third);
    }
  }
}

/// A frame during which bytes of a setting changed is not shown, unless each frame has its own trigger.
TEST(CmosCameras, FramesWithATornSettingAreSkipped) {
  OpenedCamera camera(68);
  CZELDevicePropertyImpl& property = camera.Property();
  ASSERT_TRUE(camera.Plays());
  std::vector<std::uint8_t> raw(std::size_t{1328} * 1048 + 2048);
  const auto next = [&] {
    EXPECT_EQ(camera.Device().ReadFrame(raw.data()), 1);
    return ReadFrameNumber(raw.data(), 1328, 1048, 1328, 1).value_or(0);
  };
  EXPECT_EQ(next(), 1u);
  property.SetShutter(500);
  EXPECT_EQ(next(), 3u);
  EXPECT_EQ(next(), 4u);
  property.SetDigitalGlobalGain(50);
  property.SetShutter(600);
  EXPECT_EQ(next(), 6u);
  property.SetExtTrigger(1);
  property.SetShutter(700);
  EXPECT_EQ(next(), 7u);
}

/// 44 reports at once that no frame is ready; 49 and 60 look again for a while.
TEST(CmosCameras, LargeDiskCamerasWaitForTheirFrames) {
  for (const LONG type : {44, 49, 60}) {
    SCOPED_TRACE(type);
    std::vector<std::uint8_t> raw(static_cast<std::size_t>(ModelOf(type).full.width) * 100);
    for (const double rate : {0.001, 0.0}) {
      OpenedCamera camera(type, rate);
      camera.Property().SetROI(0, 0, ModelOf(type).full.width, 64);
      ASSERT_TRUE(camera.Plays());
      const std::uint32_t before = camera.SleptMs();
      const LONG came = camera.Device().ReadFrame(raw.data());
      if (rate > 0) {
        EXPECT_EQ(came, 0);
        EXPECT_EQ(camera.SleptMs() - before, type == 44 ? 0u : 40u);
      } else if (type != 44) {
        EXPECT_EQ(came, 1);
      }
    }
  }
}

TEST(CmosCameras, OperationsOfSingleTypes) {
  const auto log = [](LONG type, auto run) {
    OpenedCamera camera(type);
    EXPECT_EQ(run(camera.Property()), S_OK) << type;
    return camera.TakeLog();
  };
  using P = CZELDevicePropertyImpl;
  LONG value = 0;
  // The page stays until a register of another one is wanted.
  EXPECT_EQ(log(15, [](P& p) { return p.SetRegister(0x234, 5), p.SetRegister(0x235, 6), p.SetShutter(7); }),
            "write F0=2; write 34=5; write 35=6; write F0=0; write 9=7");
  EXPECT_EQ(log(15, [&](P& p) { return p.GetDigitalGlobalGain(&value); }), "read 2F=20");
  EXPECT_EQ(value, 32);
  // The register holds less than the setting.
  EXPECT_EQ(log(88, [&](P& p) { return p.SetDigitalGlobalGain(1000), p.GetDigitalGlobalGain(&value); }),
            "write 35=1F");
  EXPECT_EQ(value, 1000);
  EXPECT_EQ(log(34, [](P& p) { return p.SetRegisterEx(0, 0x41, 0x1234), p.SetRegisterEx(2, 3, 4); }),
            "write 41=1234");
  EXPECT_EQ(log(34, [&](P& p) { return p.SetFpgaRegister(3, 0x102), p.GetRegisterEx(3, &value, 2); }), "");
  EXPECT_EQ(value, 0x102);
  EXPECT_EQ(log(34, [&](P& p) { return p.SetIOPort(2), p.GetIO(&value); }), "");  // not the flash
  EXPECT_EQ(value, 2);
  EXPECT_EQ(log(34, [](P& p) { return p.SetRegisterEx(3, 0, 0) == E_INVALIDARG ? S_OK : S_FALSE; }), "");
  // Both outputs of type 9, each without the other; the plug shows them as inputs.
  EXPECT_EQ(log(9, [&](P& p) { return p.SetAuxValue3(1), p.SetAuxValue4(1), p.GetIO(&value); }), "");
  EXPECT_EQ(value, 3);
  EXPECT_EQ(log(9, [&](P& p) { return p.SetAuxValue4(1), p.SetAuxValue3(0), p.GetAuxValue4(&value); }), "");
  EXPECT_EQ(value, 1);
  EXPECT_EQ(log(45, [&](P& p) { return p.SetShutter(77), p.GetModelValue2(&value); }),
            "read 9=64; write 9=4D; read 9=4D");
  EXPECT_EQ(value, 77);
  // The mosaic follows windows that start at an odd column, whatever the map.
  for (const LONG type : {45, 48, 49, 87, 9}) {
    OpenedCamera camera(type);
    camera.Property().SetROI(5, 0, 64, 64);
    EXPECT_EQ(camera.Property().UpdateDerivedSizes(), 2) << type;
  }
}

}  // namespace
}  // namespace zel
