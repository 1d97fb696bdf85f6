#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <vector>

#include "TemporaryFolder.h"
#include "device/CZELDeviceImpl.h"
#include "imaging/COrvaneImage.h"
#include "models/Factory.h"
#include "models/ModelTable.h"
#include "models/sata/CaptureLog.h"
#include "platform/Environment.h"
#include "property/CZELDevicePropertyImpl.h"
#include "sim/SimDriverHost.h"

namespace zel {
namespace {

namespace fs = std::filesystem;

constexpr int kDrive = 'E';

struct Samples {
  LONG width = 0, height = 0;
  std::vector<std::uint8_t> data;
  std::uint8_t At(LONG x, LONG y) const { return data[static_cast<std::size_t>(y * width + x)]; }
};

/// An opened simulated camera without noise, whose pictures are its samples.
class SataCamera {
 public:
  explicit SataCamera(LONG type) : camera_(CreateDeviceForType(static_cast<std::uint32_t>(type))) {
    SimConfiguration computer;
    computer.cameras = {{static_cast<int>(type), kDrive}};
    computer.framesPerSecond = 0;
    computer.noise = 0;
    computer.triggerRate = 200;
    std::string error;
    sim_ = SimDriverHost::Create(computer, &error);
    EXPECT_NE(sim_, nullptr) << error;
    installed_ = std::make_unique<ScopedDriverHost>(*sim_);
    EXPECT_EQ(camera_->OpenCamera(kDrive), 1);
    Property().SetOutputFormat(0);
    camera_->SetBufferSamples(kDeliverOnDemand);
  }

  Samples Snap() {
    EXPECT_EQ(camera_->Play(), 1);
    COrvaneImage& image = *camera_->GetImage();
    const auto bytes =
        static_cast<std::size_t>(image.GetStride()) * static_cast<std::size_t>(image.GetHeight());
    EXPECT_EQ(camera_->GetData(nullptr, 0), S_OK);
    Samples samples{image.GetWidth(), image.GetHeight(), {image.GetBuffer(), image.GetBuffer() + bytes}};
    EXPECT_EQ(camera_->Stop(), 1);
    return samples;
  }

  CZELDevice& Device() { return *camera_; }
  std::vector<std::string> ProtocolErrors() { return Sensor().ProtocolErrors(); }
  /// What the sensor would do now.
  Readout SensorReadout() {
    VirtualCamera::Frame frame;
    EXPECT_EQ(Sensor().AwaitFrame(1000, &frame), DriverError::None);
    return frame.picture.readout;
  }
  CZELDevicePropertyImpl& Property() { return dynamic_cast<CZELDeviceImpl&>(*camera_).PropertyStore(); }

 private:
  VirtualCamera& Sensor() { return *sim_->Camera({static_cast<int>(camera_->GetCameraType()), kDrive}); }

  std::unique_ptr<SimDriverHost> sim_;
  std::unique_ptr<ScopedDriverHost> installed_;
  std::unique_ptr<CZELDevice> camera_;
};

/// Windows cut the sensor's picture from the even pixel on, and mirrors mirror what was cut.
TEST(SataModels, WindowsAndMirrorsShowThatPartOfTheSensor) {
  for (const ModelRow& row : AllModels()) {
    if (row.family != Family::Sata) continue;
    SataCamera camera(row.type);
    CZELDevicePropertyImpl& property = camera.Property();
    const Samples whole = camera.Snap();
    for (int mirrors = 0; mirrors < 4; ++mirrors) {
      if (property.SetHorMirror(mirrors & 1) != S_OK && (mirrors & 1) != 0) continue;
      if (property.SetVerMirror(mirrors >> 1) != S_OK && (mirrors >> 1) != 0) continue;
      SCOPED_TRACE(testing::Message() << "type " << row.type << ", mirrors " << mirrors);
      property.SetROI(201, 103, 320, 240);
      const Samples part = camera.Snap();
      ASSERT_EQ(part.width, 320);
      ASSERT_EQ(part.height, 240);
      int different = 0;
      // Away from the frame number at the top and bottom.
      for (LONG y = 60; y < 180; ++y) {
        for (LONG x = 0; x < part.width; ++x) {
          const LONG column = (mirrors & 1) != 0 ? part.width - 1 - x : x;
          const LONG line = (mirrors >> 1) != 0 ? part.height - 1 - y : y;
          different += part.At(x, y) != whole.At(200 + column, 102 + line);
        }
      }
      EXPECT_EQ(different, 0);
    }
  }
}

TEST(SataModels, PicturesOfEvenSensorsAreTheirEvenWindows) {
  for (const LONG type : {3, 35}) {
    SataCamera camera(type);
    camera.Property().SetROI(5, 7, 101, 51);
    std::array<LONG, 4> window{};
    camera.Property().GetROI(&window[0], &window[1], &window[2], &window[3]);
    EXPECT_EQ(window, (std::array<LONG, 4>{4, 6, 102, 52}));
    EXPECT_EQ(camera.Property().Record(kRoiWidth).current, 101);
    const Samples picture = camera.Snap();
    EXPECT_EQ(picture.width, 102);
    EXPECT_EQ(picture.height, 52);
  }
}

/// Samples of two bytes have the ten bits of which one byte shows eight.
TEST(SataModels, TwoBytesPerSampleShowTheSamePicture) {
  for (const LONG type : {0, 1, 8, 35}) {
    SCOPED_TRACE(type);
    SataCamera camera(type);
    camera.Property().SetHorMirror(1);
    camera.Property().SetROI(200, 102, 320, 240);
    const Samples bytes = camera.Snap();
    EXPECT_EQ(camera.Property().SetTransMode(1), S_OK);
    const std::vector<std::uint8_t> words = camera.Snap().data;
    ASSERT_GE(words.size(), 2 * bytes.data.size());
    int different = 0;
    // Until the moving marker.
    for (std::size_t n = 0; n < 200u * 320; ++n)
      different += bytes.data[n] != ((words[2 * n] | words[2 * n + 1] << 8) >> 2);
    EXPECT_EQ(different, 0);
  }
}

TEST(SataModels, TriggeredFramesComeInBothLoops) {
  for (const LONG type : {3, 39}) {
    SataCamera camera(type);
    EXPECT_EQ(camera.Property().SetExtTrigger(1), S_OK);
    for (const LONG mode : {kDeliverQueue, kDeliverOnDemand}) {
      SCOPED_TRACE(testing::Message() << "type " << type << ", mode " << mode);
      camera.Device().SetBufferSamples(mode);
      EXPECT_EQ(camera.Device().Play(), 1);
      std::vector<std::uint8_t> picture(1280 * 1024);
      for (int n = 0; n < 2; ++n) EXPECT_EQ(camera.Device().GetData(picture.data(), 0), S_OK);
      EXPECT_EQ(camera.Device().Stop(), 1);
      EXPECT_EQ(camera.ProtocolErrors(), std::vector<std::string>());
    }
  }
}

/// What belongs to the next capture does not reach the camera with a setting that acts at once.
TEST(SataModels, WindowAndSampleSizeWaitForTheNextCapture) {
  for (const LONG type : {4, 7}) {
    SCOPED_TRACE(type);
    SataCamera camera(type);
    EXPECT_EQ(camera.Device().Play(), 1);
    EXPECT_EQ(camera.Device().GetData(nullptr, 0), S_OK);
    const Readout before = camera.SensorReadout();
    camera.Property().SetROI(200, 102, 320, 240);
    camera.Property().SetTransMode(1);
    camera.Property().SetShutter(600);
    // The first frame after the change is thrown away.
    for (int n = 0; n < 2; ++n) EXPECT_EQ(camera.Device().GetData(nullptr, 0), S_OK);
    EXPECT_EQ(camera.SensorReadout().window, before.window);
    EXPECT_GT(camera.SensorReadout().exposure, before.exposure);
    EXPECT_EQ(camera.ProtocolErrors(), std::vector<std::string>());
    EXPECT_EQ(camera.Device().Stop(), 1);
    EXPECT_EQ(camera.Device().Play(), 1);
    EXPECT_EQ(camera.SensorReadout().window.columns, 320);
    EXPECT_EQ(camera.Device().Stop(), 1);
  }
}

/// The bytes of a value of 16 bits have neighbours, the last address none.
TEST(SataModels, RegistersOfBytesArePaired) {
  SataCamera camera(5);
  LONG value = 0;
  EXPECT_EQ(camera.Property().SetRegister(0x40, 0x1234), S_OK);
  EXPECT_EQ(camera.Property().GetRegister(0x40, &value), S_OK);
  EXPECT_EQ(value, 0x1234);
  EXPECT_EQ(camera.Property().GetRegister(0x41, &value), S_OK);
  EXPECT_EQ(value, 0x3400);
  EXPECT_EQ(camera.Property().SetRegister(0xFF, 1), E_FAIL);
  EXPECT_EQ(camera.Property().GetRegister(0xFF, &value), E_FAIL);
}

std::string LogText() {
  std::ifstream file(CaptureLogPath(), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(SataModels, TheLoggingConverterNeedsNoLog) {
  const test::TemporaryFolder folder;
  SetEnvironment("TMPDIR", folder.Path().string());
  // Where another variable names the folder.
  fs::remove_all(CaptureLogPath());

  const auto capture = [] {
    SataCamera camera(39);
    camera.Property().SetTimeout(600'000);
    camera.Device().SetBufferSamples(kDeliverQueue);
    EXPECT_EQ(camera.Device().Play(), 1);
    std::vector<std::uint8_t> picture(1280 * 1024);
    EXPECT_EQ(camera.Device().GetData(picture.data(), 0), S_OK);
    EXPECT_EQ(camera.Device().Stop(), 1);
  };
  capture();
  const std::string log = LogText();
  const std::size_t done = log.find("preparation done: window 0,0, frame 1280x1024, 2560 sectors");
  const std::size_t ends = log.find("capture ends: ", log.find("capture begins", done));
  ASSERT_NE(ends, std::string::npos) << log;
  EXPECT_NE(log.find(" frames, 0 reads without one"), std::string::npos) << log;

  std::ofstream(CaptureLogPath()) << std::string(kCaptureLogLimit - 10, '-');
  LogCapture("anew");
  EXPECT_LT(LogText().size(), 40u);
  EXPECT_NE(LogText().find("anew"), std::string::npos);

  fs::remove(CaptureLogPath());
  fs::create_directory(CaptureLogPath());
  capture();
  EXPECT_TRUE(fs::is_empty(CaptureLogPath()));
  fs::remove_all(CaptureLogPath());
}

}  // namespace
}  // namespace zel
