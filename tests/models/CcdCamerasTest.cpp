// What single CCD types, and those with a chip that processes pictures, do beyond their registers.
#include <chrono>
#include <cstdlib>
#include <thread>

#include "models/OpenedCamera.h"
#include "platform/Threads.h"

namespace zel {
namespace {

using test::OpenedCamera;

struct Window {
  LONG x, y, width, height;
};

/// The samples of a raw picture, on the 8-bit scale.
std::vector<int> RawPicture(OpenedCamera& camera, LONG transferMode, const Window& window) {
  camera.Property().SetOutputFormat(0);
  EXPECT_EQ(camera.Property().SetTransMode(transferMode), S_OK);
  EXPECT_EQ(camera.Property().SetROI(window.x, window.y, window.width, window.height), S_OK);
  EXPECT_TRUE(camera.Plays());
  bool came = false;
  for (int n = 0; n < 2 && !came; ++n) came = camera.Device().GetData(nullptr, 0) == S_OK;
  EXPECT_TRUE(came);
  const unsigned char* const bytes = camera.Device().GetImage()->GetBuffer();
  std::vector<int> samples;
  for (LONG n = 0; n < window.width * window.height; ++n)
    samples.push_back(transferMode == 0 ? bytes[n] : (bytes[2 * n] | bytes[2 * n + 1] << 8) >> 2);
  EXPECT_EQ(camera.Device().Stop(), 1);
  EXPECT_EQ(camera.ProtocolErrors(), std::vector<std::string>());
  return samples;
}

/// A CCD with two fields gives the picture that its kin without them gives of the same scene.
TEST(CcdCameras, FieldsMakeOnePicture) {
  constexpr int kNoise = 4;
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
    const auto woven = RawPicture(fields, row.transferMode, row.window);
    OpenedCamera lines(row.lines);
    const auto expected = RawPicture(lines, row.transferMode, row.window);
    std::int64_t difference = 0;
    std::int64_t light = 0;
    for (std::size_t n = 0; n < woven.size(); ++n) {
      difference += std::abs(woven[n] - expected[n]);
      light += expected[n];
    }
    EXPECT_LT(difference, kNoise * std::int64_t{row.window.width} * row.window.height);
    EXPECT_GT(light, 10 * difference);
  }
}

/// Cameras with long frames wait for them: no poll counts as a failure, and stopping does not wait.
TEST(CcdCameras, PatientLoopsFailOnlyWhenSomethingFailed) {
  constexpr double kFramesPerSecond = 4;
  for (const auto& [type, patient] : {std::pair<LONG, bool>{54, true}, {75, true}, {52, false}}) {
    SCOPED_TRACE(type);
    OpenedCamera camera(type, kFramesPerSecond);
    camera.Property().SetROI(0, 0, 64, 48);
    ASSERT_EQ(camera.Device().Play(), 1);
    const std::uint64_t startNs = NowNs();
    while (camera.Device().Statistics().framesRead == 0 && NowNs() - startNs < 3'000'000'000)
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    const std::uint64_t stopNs = NowNs();
    EXPECT_EQ(camera.Device().Stop(), 1);
    EXPECT_LT(NowNs() - stopNs, 1'000'000'000u);
    EXPECT_GT(camera.Device().Statistics().framesRead, 0u);
    // The first frame of a process is read and not shown.
    EXPECT_EQ(camera.Device().Statistics().readFailures == 0, patient);
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
