#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <utility>

#include "device/CZELDevice.h"
#include "device/CZELObserver.h"
#include "imaging/COrvaneImage.h"
#include "models/Factory.h"
#include "models/OpenedCamera.h"
#include "models/usb3t2/AutoExposure.h"
#include "platform/Threads.h"
#include "property/CZELDeviceProperty.h"
#include "sim/SimDriverHost.h"
#include "sim/VirtualCamera.h"
#include "transport/usb3t2/CZELPropertyImplUSB3T2.h"

namespace zel {
namespace {

constexpr int kFrames = 6;

class FrameCounter : public CZELObserver {
 public:
  void Notify(LONG event, void* picture, CZELDevice*) override {
    if (event == kEventFrameProcessed && picture != nullptr && ++frames_ == kFrames) enough.Set();
  }
  Event enough;

 private:
  std::atomic<int> frames_ = 0;
};

/// Window sizes include one whose transfer ends before its picture.
TEST(SimulatedCapture, EveryModeBringsFramesWithoutProtocolErrors) {
  const struct {
    LONG type, mode, transferMode, width, height;
  } rows[] = {{13, kDeliverCallback, 0, 1280, 1024}, {13, kDeliverQueue, 0, 640, 480},
              {13, kDeliverOnDemand, 0, 309, 301},   {13, kDeliverOnDemand, 1, 640, 480},
              {13, kDeliverCallback, 1, 310, 100},   {13, kDeliverQueue, 1, 1280, 4},
              {1, kDeliverCallback, 0, 2048, 1536},  {1, kDeliverQueue, 0, 301, 203},
              {1, kDeliverOnDemand, 1, 309, 301},    {1, kDeliverCallback, 1, 5, 1536},
              {67, kDeliverCallback, 0, 1280, 1024}, {67, kDeliverOnDemand, 1, 641, 479},
              {78, kDeliverCallback, 0, 640, 480},   {78, kDeliverQueue, 0, 4896, 100},
              {78, kDeliverOnDemand, 1, 309, 301},   {98, kDeliverCallback, 0, 1280, 1024},
              {98, kDeliverOnDemand, 1, 641, 479}};
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << "type " << row.type << ", mode " << row.mode << ", " << row.width);
    const LONG index = row.type == 1 ? 'E' : 0;  // the letter of its drive
    SimConfiguration computer;
    computer.cameras = {{row.type, index}};
    computer.framesPerSecond = 0;
    std::string error;
    const auto host = SimDriverHost::Create(computer, &error);
    ASSERT_NE(host, nullptr) << error;
    const ScopedDriverHost installed(*host);
    const std::unique_ptr<CZELDevice> camera(CreateDeviceForType(static_cast<std::uint32_t>(row.type)));
    FrameCounter counter;
    camera->SetObserver(&counter);
    ASSERT_EQ(camera->OpenCamera(index), 1);
    camera->SetBufferSamples(row.mode);
    camera->GetProperty()->SetTimeout(60'000);
    camera->GetProperty()->SetTransMode(row.transferMode);
    camera->GetProperty()->SetROI(0, 0, row.width, row.height);
    ASSERT_EQ(camera->Play(), 1);
    std::vector<std::uint8_t> picture(std::size_t{4} * 1280 * 1024);
    if (row.mode == kDeliverCallback) {
      EXPECT_TRUE(counter.enough.WaitPumping(60'000));
    } else {
      for (int n = 0; n < kFrames; ++n) EXPECT_EQ(camera->GetData(picture.data(), 0), S_OK);
    }
    EXPECT_EQ(camera->GetImage()->GetWidth(), row.width);
    EXPECT_EQ(camera->GetImage()->GetHeight(), row.height);
    EXPECT_EQ(camera->Stop(), 1);
    EXPECT_EQ(host->Camera({row.type, index})->ProtocolErrors(), std::vector<std::string>());
    camera->SetObserver(nullptr);
  }
}

TEST(SimulatedCapture, FramesThatCameInPartAreCountedAndNotShown) {
  for (const LONG type : {1, 13, 67, 94}) {
    SCOPED_TRACE(type);
    FrameCounter counter;
    test::OpenedCamera camera(type, 0, {{SimFault::Kind::Short, 4, {}}, {SimFault::Kind::Short, 6, {}}});
    camera.Device().SetObserver(&counter);
    ASSERT_EQ(camera.Device().Play(), 1);
    EXPECT_TRUE(counter.enough.WaitPumping(60'000));
    camera.Device().Stop();
    const CaptureStatistics statistics = camera.Device().Statistics();
    EXPECT_EQ(statistics.framesIncomplete, 2u);
    EXPECT_GE(statistics.framesRead, 6u);
  }
}

/// On the frame's thread, while the application looks at the same settings.
TEST(SimulatedCapture, AutomaticExposureSettles) {
  SimConfiguration computer;
  computer.cameras = {{98, 0}};
  computer.framesPerSecond = 0;
  std::string error;
  const auto host = SimDriverHost::Create(computer, &error);
  ASSERT_NE(host, nullptr) << error;
  const ScopedDriverHost installed(*host);
  const std::unique_ptr<CZELDevice> camera(CreateDeviceForType(98));
  ASSERT_EQ(camera->OpenCamera(0), 1);
  CZELDeviceProperty& property = *camera->GetProperty();
  property.SetROI(1880, 500, 120, 120);  // the chart's grey ground
  property.SetShutter(80);
  property.SetAuxValue3(1);
  ASSERT_EQ(camera->Play(), 1);
  const VirtualCamera& sensor = *host->Camera({98, 0});
  LONG shutter = 80, before = -1;
  for (int tries = 0; tries < 1000 && shutter != before; ++tries) {
    FrameCounter frames;
    camera->SetObserver(&frames);
    EXPECT_TRUE(frames.enough.WaitPumping(60'000));
    camera->SetObserver(nullptr);
    before = std::exchange(shutter, -1);
    property.GetShutter(&shutter);
    property.SetHorMirror(tries % 2);
  }
  camera->Stop();
  EXPECT_EQ(shutter, before);
  property.GetShutter(&shutter);
  EXPECT_GT(shutter, 80);
  EXPECT_LT(shutter, 2000);
  EXPECT_EQ(sensor.ReadRegister(0x09), static_cast<std::uint32_t>(shutter));
  EXPECT_EQ(sensor.ProtocolErrors(), std::vector<std::string>());
}

/// From the darkest and from the brightest settings, on every type that has it: the mean comes as near to the
/// target as the control looks, or as a unit of the gain lets it, and stays there.
TEST(SimulatedCapture, AutomaticExposureReachesItsTarget) {
  struct Row {
    LONG type;
    bool byShutter, byGain;
  };
  for (const auto& [type, byShutter, byGain] : {Row{89, true, true},
                                                {96, true, true},
                                                {96, true, false},
                                                {96, false, true},
                                                {97, true, true},
                                                {98, true, true}}) {
    test::OpenedCamera camera(type);
    auto& property = dynamic_cast<CZELPropertyImplUSB3T2&>(camera.Property());
    const SensorSize full = ModelOf(type).full;
    property.SetROI(full.width * 3 / 5 & ~1, full.height / 4 & ~1, 120, 120);  // the chart's grey ground
    ASSERT_TRUE(camera.Plays());
    for (const LONG target : {60, 120, 170}) {
      for (const bool fromBright : {false, true}) {
        SCOPED_TRACE(testing::Message() << type << " to " << target << (fromBright ? " down, " : " up, ")
                                        << byShutter << byGain);
        const PropertyRecord shutter = property.Record(kShutter), gain = property.Record(kDigitalGlobalGain);
        const auto start = [&](const PropertyRecord& record, bool moves) {
          return !moves ? record.maximum / 8 : fromBright ? record.maximum : record.minimum;
        };
        property.SetShutter(start(shutter, byShutter));
        property.SetDigitalGlobalGain(start(gain, byGain));
        property.SetAuxValue3(byShutter);
        property.SetAuxValue4(byGain);
        property.SetAeTarget(target);
        std::vector<std::uint8_t> raw(1 << 20);
        LONG mean = 0;
        int settled = 0;
        for (int frame = 0; frame < 1000 && settled < 20; ++frame) {
          ASSERT_EQ(camera.Device().ReadFrame(raw.data()), 1);
          mean = CentreMean({raw.data(), 120, 120, 1});
          const LONG unit =
              type == 97 ? mean / std::max<LONG>(property.Record(kDigitalGlobalGain).current, 1) : 0;
          settled = std::abs(mean - target) < 4 + unit / 2 ? settled + 1 : 0;
        }
        EXPECT_EQ(settled, 20) << mean << " with shutter " << property.Record(kShutter).current << ", gain "
                               << property.Record(kDigitalGlobalGain).current;
      }
    }
  }
}

}  // namespace
}  // namespace zel
