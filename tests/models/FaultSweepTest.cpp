// Every driver call of a session goes wrong once, in every way: the library must survive it, stop, let go of
// the camera and work with it again.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>

#include "device/CZELDevice.h"
#include "device/CZELObserver.h"
#include "models/Factory.h"
#include "platform/FaultyDriverHost.h"
#include "platform/Threads.h"
#include "property/CZELDeviceProperty.h"
#include "sim/SimDriverHost.h"

namespace zel {
namespace {

using Kind = DriverFault::Kind;

constexpr int kFrames = 10;
constexpr LONG kWidth = 64, kHeight = 48;
constexpr std::uint32_t kFrameTimeoutMs = 50;
constexpr std::uint32_t kFaultMs = 3000;
// A worker that is stuck may cost `Stop` its patience of two seconds. Nothing may cost much more; a busy
// machine makes more of it.
constexpr std::uint64_t kBoundNs = 60'000'000'000;

constexpr std::uint32_t kThreadedPoints = 80;

constexpr Kind kKinds[] = {Kind::Fail,    Kind::ShortByOne, Kind::Half, Kind::TooMany,
                           Kind::Garbage, Kind::Timeout,    Kind::Hang, Kind::Vanish};

/// Of a sleep, whole seconds take milliseconds and the rest nothing; the cameras' clock shows all of it.
class FastTime : public PassingDriverHost {
 public:
  using PassingDriverHost::PassingDriverHost;
  void Sleep(std::uint32_t milliseconds) override {
    PassingDriverHost::Sleep(milliseconds);
    // Short ones would take the system's timer far longer than they ask for, and a busy machine to give them
    // back.
    if (milliseconds < 50) return;
    if (milliseconds >= 1000) std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds / 1000));
  }
  void ShowMessage(std::u16string_view) override {}
};

class FrameCounter : public CZELObserver {
 public:
  void Notify(LONG event, void* picture, CZELDevice*) override {
    if (event == kEventFrameProcessed && picture != nullptr && ++frames_ == kFrames) enough.Set();
  }
  Event enough;

 private:
  std::atomic<int> frames_{0};
};

struct Family {
  LONG type;
  int index;
};

class FaultSweep : public testing::TestWithParam<Family> {
 protected:
  FaultSweep() {
    SimConfiguration computer;
    computer.cameras = {{GetParam().type, GetParam().index}};
    computer.framesPerSecond = 0;
    computer.clock = std::make_shared<SimClock>(SimClock::Kind::Virtual);
    std::string error;
    cameras_ = SimDriverHost::Create(computer, &error);
    if (!cameras_) throw std::runtime_error(error);
    time_ = std::make_unique<FastTime>(*cameras_);
    faulty_ = std::make_unique<FaultyDriverHost>(*time_);
    installed_ = std::make_unique<ScopedDriverHost>(*faulty_);
  }

  static std::unique_ptr<CZELDevice> NewCamera(LONG mode) {
    std::unique_ptr<CZELDevice> camera(CreateDeviceForType(static_cast<std::uint32_t>(GetParam().type)));
    camera->SetBufferSamples(mode);
    return camera;
  }

  /// The script; whatever fails, it goes on as a careless application would. Returns the calls of its
  /// opening.
  std::uint32_t RunScript(CZELDevice& camera, LONG mode) {
    FrameCounter counter;
    camera.SetObserver(&counter);
    camera.OpenCamera(GetParam().index);
    const std::uint32_t opening = faulty_->Calls();
    CZELDeviceProperty& property = *camera.GetProperty();
    property.SetTimeout(kFrameTimeoutMs);
    property.SetROI(0, 0, kWidth, kHeight);
    property.SetShutter(100);
    property.SetHorMirror(1);
    const bool playing = camera.Play() == 1;
    if (mode == kDeliverOnDemand) {
      for (int n = 0; n < kFrames; ++n) camera.GetData(nullptr, 0);
    } else {
      counter.enough.Wait(kFrameTimeoutMs);
    }
    property.SetAnalogGlobalGain(20);
    camera.Pause();
    camera.Play();
    EXPECT_EQ(camera.Stop(), playing ? 1 : 0);
    EXPECT_NE(camera.GetStatus(), kStatePlaying);
    camera.SetObserver(nullptr);
    return opening;
  }

  static bool BringsFrames(CZELDevice& camera) {
    camera.SetBufferSamples(kDeliverOnDemand);
    camera.GetProperty()->SetROI(0, 0, kWidth, kHeight);
    if (camera.Play() != 1) return false;
    bool came = false;
    // A frame that was cut may cost the next one, too.
    for (int n = 0; n < 3 && !came; ++n) came = camera.GetData(nullptr, 0) == S_OK;
    return camera.Stop() == 1 && came;
  }

  void Survives(LONG mode, DriverFault fault) {
    SCOPED_TRACE(testing::Message() << "mode " << mode << ", call " << fault.call << ", kind "
                                    << static_cast<int>(fault.kind));
    const std::uint64_t startNs = NowNs();
    auto camera = NewCamera(mode);
    faulty_->Arm(fault);
    const std::uint32_t opening = RunScript(*camera, mode);
    faulty_->Restore();
    // Half of a camera may be open when its opening failed.
    if (fault.call >= opening) {
      EXPECT_TRUE(BringsFrames(*camera)) << "the same camera";
    }
    camera = NewCamera(kDeliverOnDemand);
    EXPECT_EQ(camera->OpenCamera(GetParam().index), 1);
    EXPECT_TRUE(BringsFrames(*camera)) << "another camera";
    camera.reset();
    EXPECT_LT(NowNs() - startNs, kBoundNs);
    ++points_;
  }

  /// Calls of the script when nothing goes wrong.
  std::uint32_t Calls(LONG mode) {
    const auto camera = NewCamera(mode);
    faulty_->Restore();
    RunScript(*camera, mode);
    return faulty_->Calls();
  }

  std::unique_ptr<SimDriverHost> cameras_;
  std::unique_ptr<FastTime> time_;
  std::unique_ptr<FaultyDriverHost> faulty_;
  std::unique_ptr<ScopedDriverHost> installed_;
  int points_ = 0;
};

TEST_P(FaultSweep, NoCallThatGoesWrongHarmsTheLibrary) {
  const std::uint32_t calls = Calls(kDeliverOnDemand);
  ASSERT_GT(calls, 20u);
  for (std::uint32_t call = 0; call < calls && !HasFailure(); ++call) {
    for (const Kind kind : kKinds) Survives(kDeliverOnDemand, {kind, call, kFaultMs});
  }
  // With worker threads a part is enough: what they add is who makes the call.
  const std::uint32_t threaded = Calls(kDeliverCallback);
  for (std::uint32_t point = 0; point < kThreadedPoints && !HasFailure(); ++point) {
    Survives(kDeliverCallback,
             {kKinds[point % std::size(kKinds)], point * threaded / kThreadedPoints, kFaultMs});
  }
  std::printf("type %d: %u calls, %d points swept\n", static_cast<int>(GetParam().type), calls, points_);
  RecordProperty("points", points_);
}

INSTANTIATE_TEST_SUITE_P(Families, FaultSweep,
                         testing::Values(Family{1, 'E'}, Family{13, 0}, Family{67, 0}, Family{78, 0},
                                         Family{98, 0}, Family{61, 0}),
                         [](const auto& row) { return "Type" + std::to_string(row.param.type); });

}  // namespace
}  // namespace zel
