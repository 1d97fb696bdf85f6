// The autofocus on whole cameras: lens, scene, capture workers, search.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "device/CZELDevice.h"
#include "device/CZELObserver.h"
#include "imaging/COrvaneImage.h"
#include "models/Factory.h"
#include "platform/PassingDriverHost.h"
#include "platform/Threads.h"
#include "property/CZELDevicePropertyImpl.h"
#include "sim/SimDriverHost.h"
#include "sim/VirtualCamera.h"
#include "transport/usb3t2/FpgaRegisters.h"

namespace zel {
namespace {

constexpr LONG kSharpAround = 12;  // positions on both sides of the sharpest that blur below half a pixel

struct Block {
  LONG x, y, width, height;
};

// Of the test chart in 656 x 494 pixels.
constexpr Block kSlantedEdge{34, 354, 76, 76};
constexpr Block kStarCentre{500, 140, 40, 40};
constexpr Block kStarRim{590, 130, 30, 60};

constexpr std::chrono::seconds kTooLong{120};

/// Counts the frames that were processed.
class FrameClock : public CZELObserver {
 public:
  void Notify(LONG event, void*, CZELDevice*) override {
    if (event != kEventFrameProcessed) return;
    const std::lock_guard lock(mutex_);
    ++frames_;
    came_.notify_all();
  }
  std::uint64_t Now() {
    const std::lock_guard lock(mutex_);
    return frames_;
  }
  bool WaitUntil(std::uint64_t frame) {
    std::unique_lock lock(mutex_);
    return came_.wait_for(lock, kTooLong, [&] { return frames_ >= frame; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable came_;
  std::uint64_t frames_ = 0;
};

/// Time by frames, 25 ms each: the search waits for pictures taken with the lens at rest, however fast or
/// slow this machine makes them. Short waits are real: those of the capture loop between two tries.
class FrameTimeHost : public PassingDriverHost {
 public:
  FrameTimeHost(DriverHost& next, FrameClock& clock) : PassingDriverHost(next), clock_(clock) {}
  void Sleep(std::uint32_t milliseconds) override {
    constexpr std::uint32_t kFrameMs = 25;
    if (ticks && milliseconds >= kFrameMs) {
      clock_.WaitUntil(clock_.Now() + (milliseconds + kFrameMs - 1) / kFrameMs);
    } else {
      PassingDriverHost::Sleep(milliseconds);
    }
  }
  std::atomic<bool> ticks = false;

 private:
  FrameClock& clock_;
};

/// An FX3 camera that looks at a block of the test chart.
class FocusingCamera {
 public:
  FocusingCamera(const Block& block, double noise, int sharp) {
    SimConfiguration computer;
    computer.noise = noise;
    computer.cameras = {{kType, 0}};
    computer.framesPerSecond = 0;
    computer.focus = {{sharp, 0}};
    std::string error;
    sim_ = SimDriverHost::Create(computer, &error);
    EXPECT_NE(sim_, nullptr) << error;
    host_ = std::make_unique<FrameTimeHost>(*sim_, clock);
    installed_ = std::make_unique<ScopedDriverHost>(*host_);
    camera_.reset(CreateDeviceForType(kType));
    camera_->SetObserver(&clock);
    EXPECT_EQ(camera_->OpenCamera(0), 1);
    camera_->SetBufferSamples(0);
    Settings().SetOperatorBlock(block.x, block.y, block.width, block.height);
  }
  ~FocusingCamera() {
    Settings().StopAutoFocus();
    camera_->Stop();
  }

  CZELDevicePropertyImpl& Settings() {
    return dynamic_cast<CZELDevicePropertyImpl&>(*camera_->GetProperty());
  }
  bool Plays() { return host_->ticks = camera_->Play() == 1; }
  LONG LensAt() {
    LONG position = -1;
    Settings().GetFpgaRegister(kFpgaFocus, &position);
    return position;
  }

  void MoveScene(int sharp) { sim_->Camera({kType, 0})->MoveScene(sharp); }
  bool WaitForEnd() {
    return WaitFor([this] { return !Settings().AutoFocus().IsRunning(); });
  }
  /// Whether the lens comes to where the scene is sharp and stays there for some steps of the search.
  bool SettlesAt(LONG sharp) {
    constexpr int kFramesToStay = 60;
    int stays = 0;
    return WaitFor([&] {
      stays = std::abs(LensAt() - sharp) <= kSharpAround ? stays + 1 : 0;
      return stays == kFramesToStay;
    });
  }

  FrameClock clock;

 private:
  static constexpr int kType = 94;
  static constexpr std::uint64_t kFramesToWait = 5000;

  /// Looks after every frame; false when it takes too many.
  template <class Condition>
  bool WaitFor(Condition isReached) {
    const std::uint64_t last = clock.Now() + kFramesToWait;
    while (!isReached()) {
      const std::uint64_t now = clock.Now();
      if (now > last || !clock.WaitUntil(now + 1)) return false;
    }
    return true;
  }

  std::unique_ptr<SimDriverHost> sim_;
  std::unique_ptr<FrameTimeHost> host_;
  std::unique_ptr<ScopedDriverHost> installed_;
  std::unique_ptr<CZELDevice> camera_;
};

/// What the search sees must grow towards the sharpest position, more than the noise makes of it: each filter
/// has its block of the chart.
TEST(AutoFocusOfACamera, SingleSearchEndsWhereTheSceneIsSharp) {
  const struct {
    LONG filter;
    Block block;
    double noise;
    int head;  ///< the range begins this far below the sharpest position, 0 at least
  } rows[] = {
      {0, kSlantedEdge, 0, 255},
      {1, kStarCentre, 1, 32},
      {2, kStarRim, 0, 255},  // the chart's lens leaves a slope that noise would bend
  };
  for (const auto& row : rows) {
    for (const int sharp : {24, 88, 152, 232}) {
      SCOPED_TRACE(testing::Message() << "filter " << row.filter << ", sharp at " << sharp);
      FocusingCamera camera(row.block, row.noise, sharp);
      camera.Settings().SetAutoFocusFilterType(row.filter);
      camera.Settings().SetAutoFocusRange(std::max(sharp - row.head, 0), 255);
      ASSERT_TRUE(camera.Plays());
      ASSERT_EQ(camera.Settings().StartAutoFocus(), S_OK);
      ASSERT_TRUE(camera.WaitForEnd());
      EXPECT_NEAR(camera.LensAt(), sharp, kSharpAround);
      LONG position = -1;
      camera.Settings().GetAutoFocusCurPos(&position);
      EXPECT_EQ(position, camera.LensAt());
    }
  }
}

TEST(AutoFocusOfACamera, ContinuousModeFollowsTheScene) {
  const std::pair<int, int> ways[] = {{60, 200}, {200, 60}, {136, 100}};
  for (const auto& [from, to] : ways) {
    SCOPED_TRACE(testing::Message() << "from " << from << " to " << to);
    FocusingCamera camera(kStarCentre, 1, from);
    camera.Settings().SetAutoFocusMode(1);
    ASSERT_TRUE(camera.Plays());
    ASSERT_EQ(camera.Settings().StartAutoFocus(), S_OK);
    EXPECT_TRUE(camera.SettlesAt(from)) << camera.LensAt();
    camera.MoveScene(to);
    EXPECT_TRUE(camera.SettlesAt(to)) << camera.LensAt();
    EXPECT_TRUE(camera.Settings().AutoFocus().IsRunning());
  }
}

}  // namespace
}  // namespace zel
