// What single CCD types, and those with a chip that processes pictures, do beyond their registers.
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <numeric>
#include <thread>

#include "models/ModelExpectations.h"
#include "models/OpenedCamera.h"
#include "platform/Threads.h"
#include "sim/Sensor.h"
#include "sim/sensors/SensorMaps.h"

namespace zel {
namespace {

using test::OpenedCamera;

struct Window {
  LONG x, y, width, height;
};

/// The samples of a raw picture, on the 8-bit scale.
std::vector<int> RawPicture(OpenedCamera& camera, const Window& window, LONG transferMode = 0) {
  camera.Property().SetOutputFormat(0);
  EXPECT_EQ(camera.Property().SetTransMode(transferMode), S_OK);
  camera.Property().SetROI(window.x, window.y, window.width, window.height);
  EXPECT_TRUE(camera.Plays());
  bool came = false;
  for (int n = 0; n < 2 && !came; ++n) came = camera.Device().GetData(nullptr, 0) == S_OK;
  EXPECT_TRUE(came);
  COrvaneImage& image = *camera.Device().GetImage();
  const unsigned char* const bytes = image.GetBuffer();
  std::vector<int> samples;
  for (LONG n = 0; n < image.GetWidth() * image.GetHeight(); ++n)
    samples.push_back(transferMode == 0 ? bytes[n] : (bytes[2 * n] | bytes[2 * n + 1] << 8) >> 2);
  EXPECT_EQ(camera.Device().Stop(), 1);
  EXPECT_EQ(camera.ProtocolErrors(), std::vector<std::string>());
  return samples;
}

double Mean(const std::vector<int>& samples) {
  return std::accumulate(samples.begin(), samples.end(), 0.0) / static_cast<double>(samples.size());
}

/// Mean difference of two pictures of the same size.
double Difference(const std::vector<int>& one, const std::vector<int>& other) {
  EXPECT_EQ(one.size(), other.size());
  double difference = 0;
  for (std::size_t n = 0; n < one.size(); ++n) difference += std::abs(one[n] - other[n]);
  return difference / static_cast<double>(one.size());
}

constexpr double kNoise = 4;  // that two pictures of the same may differ

/// A CCD with two fields gives the picture that its kin without them gives of the same scene.
TEST(CcdCameras, FieldsMakeOnePicture) {
  const struct {
    LONG fields, lines, transferMode;
    Window window;
  } rows[] = {
      {58, 78, 0, {0, 0, 640, 480}},
      {58, 78, 0, {351, 401, 640, 303}},
      {41, 84, 0, {11, 20, 640, 481}},
      {41, 84, 1, {10, 21, 640, 482}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.fields << ", window top " << row.window.y);
    OpenedCamera fields(row.fields);
    const auto woven = RawPicture(fields, row.window, row.transferMode);
    OpenedCamera lines(row.lines);
    const auto expected = RawPicture(lines, row.window, row.transferMode);
    EXPECT_LT(Difference(woven, expected), kNoise);
    EXPECT_GT(Mean(expected), 10 * kNoise);
  }
}

/// Shutter and gain of every type act on its pictures through its registers.
TEST(CcdCameras, ExposureReachesThePicture) {
  for (const auto& maps : {CcdSensors(), OtherSensors()}) {
    for (const SensorMap& map : maps) {
      SCOPED_TRACE(map.type);
      OpenedCamera camera(map.type);
      const PropertyRecord gain = camera.Property().Record(kDigitalGlobalGain);
      RawPicture(camera, {0, 200, 64, 48});  // some fit their range in the first preparation
      const PropertyRecord range = camera.Property().Record(kShutter);
      // Where a shutter of 0 is the default, exposures have a part that it does not change.
      const LONG shutter = range.current > 0 ? std::max((range.current + 1) / 2, range.minimum) : 64;
      const auto picture = [&](LONG lines, LONG gainNow) {
        camera.Property().SetShutter(lines);
        camera.Property().SetDigitalGlobalGain(gainNow);
        return Mean(RawPicture(camera, {0, 200, 64, 48}));
      };
      const double dark = picture(shutter, gain.current / 2);
      EXPECT_GT(picture(2 * shutter, gain.current / 2), 1.02 * dark);
      EXPECT_GT(picture(shutter, gain.current + gain.maximum / 16), 1.02 * dark);
      if (camera.Property().SetAnalogGlobalGain(100) == S_OK) {
        EXPECT_GT(picture(shutter, gain.current / 2), 1.02 * dark) << "analogue";
      }
    }
  }
}

/// Mirrored pictures are the same pictures, turned, and of the phase that the sensor's first pixel has.
TEST(CcdCameras, MirrorsTurnThePicture) {
  for (const LONG type : {16, 17, 30, 61}) {
    OpenedCamera camera(type);
    for (const Window& window :
         {Window{350, 400, 64, 48}, Window{351, 401, 65, 47}, Window{351, 400, 64, 47}}) {
      camera.Property().SetHorMirror(0);
      camera.Property().SetVerMirror(0);
      const auto upright = RawPicture(camera, window);
      for (const LONG mirrors : {0, 1, 2, 3}) {
        SCOPED_TRACE(testing::Message()
                     << "type " << type << ", mirrors " << mirrors << ", left " << window.x);
        camera.Property().SetHorMirror(mirrors & 1);
        camera.Property().SetVerMirror(mirrors >> 1);
        const auto turned = RawPicture(camera, window);
        std::vector<int> expected;
        const LONG lastColumn = (mirrors & 1) != 0 ? window.width - 1 : 0;
        const LONG lastRow = (mirrors & 2) != 0 ? window.height - 1 : 0;
        for (LONG y = 0; y < window.height; ++y) {
          for (LONG x = 0; x < window.width; ++x)
            expected.push_back(upright[static_cast<std::size_t>(std::abs(lastRow - y) * window.width +
                                                                std::abs(lastColumn - x))]);
        }
        // The frame number in the first and last lines is not mirrored.
        const auto middle = [&](const std::vector<int>& all) {
          const auto lines = static_cast<std::ptrdiff_t>(window.width * 12);
          return std::vector(all.begin() + lines, all.end() - lines);
        };
        EXPECT_LT(Difference(middle(turned), middle(expected)), 2 * kNoise);
        const LONG phase = ((window.x + lastColumn) % 2 << 1) | (window.y + lastRow) % 2;
        EXPECT_EQ(camera.Property().UpdateDerivedSizes(), phase);
      }
    }
  }
}

TEST(CcdCameras, SubSamplingHalvesThePicture) {
  for (const LONG type : {61, 64, 66, 72, 77, 84, 85, 92, 93, 94, 95}) {
    SCOPED_TRACE(type);
    OpenedCamera camera(type);
    const auto whole = RawPicture(camera, {0, 0, 200, 120});
    EXPECT_EQ(camera.Property().SetSubSampleX(1), S_OK);
    EXPECT_EQ(camera.Property().SetSubSampleY(1), S_OK);
    const auto half = RawPicture(camera, {0, 0, 200, 120});
    EXPECT_EQ(half.size(), 100u * 60u);
    EXPECT_NEAR(Mean(half), Mean(whole), 0.3 * Mean(whole));
  }
}

/// `Play` and binning leave the exposure as it was set, whatever the frame. Only type 78's shutter follows
/// its readout.
TEST(CcdCameras, BinningCcdsKeepTheirExposure) {
  for (const LONG type : {75, 76, 79, 80, 81, 83}) {
    SCOPED_TRACE(type);
    OpenedCamera camera(type);
    const SettingRange range = *ModelOf(type).shutter;
    const auto shutter = [&] {
      const PropertyRecord& record = camera.Property().Record(kShutter);
      return std::array{record.minimum, record.maximum, record.current};
    };
    for (const LONG lines : {range.maximum, LONG{1000}}) {
      EXPECT_EQ(camera.Property().SetShutter(lines), S_OK);
      for (const LONG binned : {0, 0, 1, 1, 0}) {
        EXPECT_EQ(camera.Property().SetModelValue4(binned), S_OK);
        EXPECT_EQ(RawPicture(camera, {0, 0, 64, 48}).size(), 64u * (48u >> binned));
        EXPECT_EQ(shutter(), (std::array{range.minimum, range.maximum, lines}));
      }
    }
    EXPECT_EQ(camera.Property().SetModelValue5(1), S_OK);
    EXPECT_EQ(RawPicture(camera, {0, 0, 64, 48}).size(), 32u * 48u);
  }
}

/// What the camera did not take is not stored. All families that program their sensors at once.
TEST(CcdCameras, NoSettingIsStoredWithoutACamera) {
  for (const ModelRow& row : AllModels()) {
    if (row.family == Family::Sata) continue;
    SCOPED_TRACE(row.type);
    OpenedCamera camera(row.type);
    camera.Device().CloseDevice(0);
    const std::pair<test::Setter, LONG> settings[] = {{test::kShutterSetter, kShutter},
                                                      {test::kGainSetter, kDigitalGlobalGain},
                                                      {test::kAnalogGainSetter, kAnalogGlobalGain},
                                                      {test::kHorMirrorSetter, kHorMirror},
                                                      {test::kVerMirrorSetter, kVerMirror},
                                                      {test::kTriggerSetter, kExtTrigger},
                                                      {test::kHalfClockSetter, kHalfClock}};
    for (const auto& [set, id] : settings) {
      const PropertyRecord before = camera.Property().Record(id);
      if (before.supported == 0) continue;
      EXPECT_TRUE(FAILED((camera.Property().*set)(before.maximum))) << id;
      EXPECT_EQ(camera.Property().Record(id).current, before.current) << id;
    }
  }
}

TEST(CcdCameras, SwitchesAreReadBack) {
  for (const LONG type : {12, 37, 66}) {
    OpenedCamera camera(type);
    for (const LONG value : {1, 0}) {
      LONG on = 5;
      EXPECT_EQ(camera.Property().SetExtTrigger(value), S_OK);
      EXPECT_EQ(camera.Property().GetExtTrigger(&on), S_OK);
      EXPECT_EQ(on, value) << type;
    }
  }
}

/// The register that a model writes for half clock is the one by which its sensor slows down.
TEST(CcdCameras, HalfClockReachesTheSensor) {
  const struct {
    LONG type;
    std::uint32_t address;
    const char* write;
  } rows[] = {{11, 0x22, "write 22=1"},
              {21, 0x22, "write 22=1"},
              {92, 0x801A, "write 801A=1"},
              {94, 0x3A, "write 3A=1"},
              {95, 0x801A, "write 801A=1"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.type);
    OpenedCamera camera(row.type);
    EXPECT_EQ(camera.Property().SetHalfClock(1), S_OK);
    EXPECT_TRUE(camera.Plays());
    EXPECT_NE(camera.TakeLog().find(row.write), std::string::npos);
    Sensor sensor(*FindSensorMap(static_cast<int>(row.type)));
    const double seconds = sensor.Decode(1).frameSeconds;
    sensor.Write(row.address, 1);
    EXPECT_DOUBLE_EQ(sensor.Decode(1).frameSeconds, 2 * seconds);
  }
}

/// Waits for what another thread brings about; the limit only ends a hang.
template <class Condition>
bool Eventually(Condition condition) {
  const std::uint64_t startNs = NowNs();
  while (!condition() && NowNs() - startNs < 120'000'000'000) std::this_thread::yield();
  return condition();
}

/// Cameras with long frames wait for them: no poll counts as a failure, and stopping does not wait.
TEST(CcdCameras, PatientLoopsFailOnlyWhenSomethingFailed) {
  constexpr double kOneADay = 1.0 / 86'400;
  for (const auto& [type, patient] : {std::pair<LONG, bool>{54, true}, {75, true}, {52, false}}) {
    for (const double framesPerSecond : {10.0, kOneADay}) {
      SCOPED_TRACE(testing::Message() << type << ", " << framesPerSecond << " frames a second");
      OpenedCamera camera(type, framesPerSecond);
      camera.Property().SetTimeout(600'000);
      camera.Property().SetROI(0, 0, 64, 48);
      ASSERT_EQ(camera.Device().Play(), 1);
      const std::uint32_t polls = camera.SleptMs() + 100;
      EXPECT_TRUE(Eventually([&] {
        return framesPerSecond == kOneADay ? camera.SleptMs() > polls
                                           : camera.Device().Statistics().framesRead > 0;
      }));
      EXPECT_EQ(camera.Device().Stop(), 1);
      const std::uint32_t slept = camera.SleptMs();
      for (int n = 0; n < 10; ++n) std::this_thread::yield();
      EXPECT_EQ(camera.SleptMs(), slept) << "still polls";
      if (patient || framesPerSecond == kOneADay) {
        EXPECT_EQ(camera.Device().Statistics().readFailures == 0, patient);
      }
    }
  }
}

TEST(CcdCameras, Type61StreamsOnlyWhilePlaying) {
  OpenedCamera camera(61);
  CZELDeviceImpl& device = camera.Device();
  camera.Property().SetROI(0, 0, 64, 48);
  const struct {
    LONG (CZELDeviceImpl::*step)();
    const char* first;
    const char* last;
  } steps[] = {
      {&CZELDeviceImpl::Play, "write 1=1; write 30=0", "write 2C=0"},
      {&CZELDeviceImpl::Pause, "write 1=0", "write 1=0"},
      {&CZELDeviceImpl::Play, "write 1=1", "write 1=1"},
      {&CZELDeviceImpl::Stop, "write 1=0", "write 1=0"},
  };
  for (const auto& step : steps) {
    EXPECT_EQ((device.*step.step)(), 1);
    const std::string log = camera.TakeLog();
    EXPECT_TRUE(log.starts_with(step.first) && log.ends_with(step.last)) << log;
  }
  EXPECT_EQ(device.Stop(), 0);
  EXPECT_EQ(camera.Property().SetColorGain(kColorGainGreen, 300), S_OK);
  EXPECT_EQ(camera.Property().SetColorGain(kColorGainBlue, 301), E_INVALIDARG);
  EXPECT_EQ(camera.Property().SetBayerDecodingMethod(2), S_OK);
  EXPECT_EQ(camera.Property().SetAutoWhiteBalance(1), S_OK);
  EXPECT_EQ(camera.TakeLog(), "write 84=FF; write 80=2; write 82=1");
  device.CloseDevice(0);
  EXPECT_EQ(camera.TakeLog(), "write 0=1");
  EXPECT_EQ(camera.Property().SetShutter(5), E_HANDLE);
  EXPECT_EQ(camera.ProtocolErrors(), std::vector<std::string>());
}

TEST(CcdCameras, SettingsOfSingleTypes) {
  static constexpr unsigned char kProgram[61] = {1, 2};
  using Call = HRESULT (*)(CZELDevicePropertyImpl&);
  const struct {
    LONG type;
    Call call;
    HRESULT result;
    const char* log;
    HRESULT closed;  ///< the same call without a camera
  } rows[] = {
      {16, [](auto& p) { return p.SetAutoWhiteBalance(2); }, S_OK, "write 25=1", E_FAIL},
      {16, [](auto& p) { return p.SetProgrammableGamma(42, 255); }, S_OK, "write 40=FF", E_FAIL},
      {16, [](auto& p) { return p.SetProgrammableGamma(47, 256); }, E_INVALIDARG, "", E_INVALIDARG},
      {16, [](auto& p) { return p.SetProgrammableGamma(48, 1); }, E_NOTIMPL, "", E_NOTIMPL},
      {29, [](auto& p) { return p.SetFpgaRegister(5, 0x1234); }, S_OK, "write 105=1234", E_FAIL},
      {40, [](auto& p) { return p.SetFpgaRegister(5, 0x1234); }, S_OK, "write 105=1234", E_FAIL},
      {40, [](auto& p) { return p.SetModelOption(kProgram, 2); }, S_OK, "write 19A=55A", E_FAIL},
      {40, [](auto& p) { return p.SetModelOption(kProgram, 61); }, E_INVALIDARG, "", E_INVALIDARG},
      {41, [](auto& p) { return p.SetTransMode(1); }, S_OK, "write B=1", S_OK},
      {41, [](auto& p) { return p.SetTransMode(-1); }, E_INVALIDARG, "", E_INVALIDARG},
      {42, [](auto& p) { return p.SetROI(0, 0, 100, 100); }, E_NOTIMPL, "", E_NOTIMPL},
      {42, [](auto& p) { return p.SetModelValue2(200); }, S_OK, "write 47=C8", E_FAIL},
      {42, [](auto& p) { return p.SetModelValue3(256); }, E_INVALIDARG, "", E_INVALIDARG},
      {42, [](auto& p) { return p.SetColorful(7); }, S_OK, "write 41=1", E_FAIL},
      {52, [](auto& p) { return p.SetRegister(0x2004, 1); }, E_INVALIDARG, "", E_INVALIDARG},
      {55, [](auto& p) { return p.ApplyColorMatrix(); }, S_OK,
       "write 4=64; write 9A=3; write 30=0; write 32=0; write 34=293; write 36=1EE; write 38=0", E_HANDLE},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << "type " << row.type << ", " << row.log);
    OpenedCamera camera(row.type);
    EXPECT_EQ(row.call(camera.Property()), row.result);
    EXPECT_EQ(camera.TakeLog(), row.log);
    EXPECT_EQ(camera.ProtocolErrors(), std::vector<std::string>());
    camera.Device().CloseDevice(0);
    EXPECT_EQ(row.call(camera.Property()), row.closed);
  }
}

TEST(CcdCameras, SerialNumberOfType21) {
  OpenedCamera camera(21);
  unsigned char number[9] = "AB-00042";
  EXPECT_EQ(camera.Property().SetSerialNum(number), S_OK);
  EXPECT_EQ(camera.SleptMs(), 80u);
  unsigned char found[9] = {};
  EXPECT_EQ(camera.Property().GetSerialNum(found), S_OK);
  EXPECT_STREQ(reinterpret_cast<const char*>(found), "AB-00042");
  camera.Device().CloseDevice(0);
  EXPECT_EQ(camera.Property().SetSerialNum(number), E_FAIL);
  EXPECT_EQ(camera.Property().GetSerialNum(found), E_FAIL);
}

}  // namespace
}  // namespace zel
