// What a capture promises its listener, its transport and the rest of the machine.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>

#include "FakeCamera.h"
#include "ThreadPlacement.h"
#include "common/ResultCodes.h"
#include "transport/ScriptedDriverHost.h"

namespace zel {
namespace {

/// Everything that is told or done, in its order.
class Log : public CZELObserver {
 public:
  void Notify(LONG event, void* param, CZELDevice* device) override {
    const std::string state = std::to_string(device->GetStatus());
    Add(std::to_string(event) +
        (param == nullptr   ? ""
         : param == picture ? " picture"
                            : " other") +
        " in " + state);
    if (event != kEventStateChanged) frames.Release();
  }
  void Add(const std::string& text) {
    const std::lock_guard lock(mutex_);
    lines_.push_back(text);
  }
  std::vector<std::string> Take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(lines_, {});
  }

  std::atomic<void*> picture = nullptr;
  Semaphore frames{0, 1000};

 private:
  std::mutex mutex_;
  std::vector<std::string> lines_;
};

class PermittedCamera : public FakeCamera {
 public:
  PermittedCamera() {
    onRead = [this](unsigned char* buffer) { return PermittedFrame(buffer); };
  }
  ~PermittedCamera() override { Shutdown(); }
  void ProcessFrame(unsigned char* raw) override {
    if (generic) return CZELDeviceImpl::ProcessFrame(raw);
    DeliverFrame(raw, 0, frameEvent);
  }
  LONG frameEvent = kEventFrameProcessed;
  bool generic = false;  ///< what a device does that has no way of its own
};

TEST(CaptureEvents, ByModeInOrderWithTheirParameters) {
  const struct {
    LONG mode, frameEvent;
    bool generic;
    std::string told;  ///< of a frame
  } rows[] = {
      {kDeliverCallback, kEventFrameProcessed, false, "1 picture in 1"},
      {kDeliverCallback, kEventSecondFrameKind, false, "4 picture in 1"},
      {kDeliverCallback, 0, false, ""},
      {kDeliverCallback, 0, true, "1 picture in 1"},
      {kDeliverQueue, kEventFrameProcessed, false, ""},
      {kDeliverOnDemand, kEventFrameProcessed, false, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    Log log;
    {
      PermittedCamera camera;
      camera.frameEvent = row.frameEvent;
      camera.generic = row.generic;
      camera.SetBufferSamples(row.mode);
      camera.SetObserver(&log);
      EXPECT_EQ(camera.OpenCamera(0), 1);
      EXPECT_EQ(camera.Play(), 1);
      const auto image = camera.HoldImage();
      log.picture = row.generic ? static_cast<void*>(image.get()) : image->GetBuffer();
      EXPECT_THAT(log.Take(), testing::ElementsAre("0 in 0", "0 in 1"));
      for (int n = 0; n < 3; ++n) {
        unsigned char pixels[kFrameBytes];
        camera.permits.Release();
        if (row.mode != kDeliverCallback) {
          EXPECT_EQ(camera.GetData(pixels, 0), S_OK);
        } else if (!row.told.empty()) {
          EXPECT_TRUE(log.frames.Acquire());
        } else {
          while (camera.Statistics().framesProcessed <= static_cast<unsigned>(n)) std::this_thread::yield();
        }
      }
      const std::vector<std::string> told =
          row.told.empty() ? std::vector<std::string>{} : std::vector<std::string>(3, row.told);
      EXPECT_EQ(log.Take(), told);
      camera.Pause();
      camera.Play();
      camera.Stop();
      EXPECT_THAT(log.Take(), testing::ElementsAre("0 in 2", "0 in 1", "0 in 3"));
    }
    EXPECT_THAT(log.Take(), testing::ElementsAre("0 in 3"));
  }
}

TEST(CaptureStop, EndsTheReadThenTellsThenStopsTheCamera) {
  for (const LONG mode : {kDeliverCallback, kDeliverQueue, kDeliverOnDemand}) {
    SCOPED_TRACE(mode);
    Log log;
    Event reading, release;
    FakeCamera camera;
    camera.onRead = [&](unsigned char*) {
      reading.Set();
      release.Wait();
      log.Add("read over");
      return LONG{0};
    };
    camera.onAbort = [&] {
      log.Add("abort");
      release.Set();
    };
    camera.store.onStopped = [&] { log.Add("settings"); };
    camera.onEnd = [&] { log.Add(camera.GetImage() != nullptr ? "end" : "end, too late"); };
    camera.SetBufferSamples(mode);
    camera.SetObserver(&log);
    camera.OpenCamera(0);
    camera.Play();
    if (mode != kDeliverOnDemand) reading.Wait();
    log.Take();
    camera.Stop();
    std::vector<std::string> order = {"abort", "read over", "0 in 3", "settings", "end"};
    if (mode == kDeliverOnDemand) order.erase(order.begin(), order.begin() + 2);
    EXPECT_EQ(log.Take(), order);
    camera.SetObserver(nullptr);
  }
}

/// The most processor time that a thread spent between two calls.
class ProcessorTime {
 public:
  void Mark() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    const double seconds = static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
    if (last_ >= 0) most_ = std::max(most_.load(), seconds - last_);
    last_ = seconds;
  }
  double Most() const { return most_; }

 private:
  double last_ = -1;
  std::atomic<double> most_ = 0;
};

TEST(CapturePause, HoldsForASecondAndCostsNothing) {
  ProcessorTime capture, process;
  Listener listener;
  listener.onFrame = [&](std::uint32_t) { process.Mark(); };
  FakeCamera camera;
  camera.onRead = [&](unsigned char* buffer) {
    capture.Mark();
    return camera.NextFrame(buffer);
  };
  camera.SetObserver(&listener);
  camera.OpenCamera(0);
  camera.Play();
  listener.AwaitFrames(3);
  EXPECT_EQ(camera.Pause(), 1);
  const std::uint32_t frames = camera.frames;
  EXPECT_FALSE(Event().Wait(1000));
  EXPECT_EQ(camera.frames, frames);
  EXPECT_EQ(camera.Play(), 1);
  listener.AwaitFrames(3);
  camera.SetObserver(nullptr);
  EXPECT_LT(capture.Most(), 0.1) << "seconds of processor time in one go";
  EXPECT_LT(process.Most(), 0.1);
}

/// Compared with workers that were told so, since not every system grants it.
TEST(CaptureWorkers, PriorityAndProcessorByTrigger) {
  const auto placed = [](WorkerPriority priority, std::uint64_t mask) {
    Event go;
    std::string placement;
    Worker worker([&] {
      go.Wait();
      placement = ThreadPlacement();
    });
    worker.SetPriority(priority);
    if (ProcessorCount() >= 2) worker.SetAffinity(mask);
    go.Set();
    worker.Wait();
    return placement;
  };
  const std::string urgent = placed(WorkerPriority::TimeCritical, 1),
                    high = placed(WorkerPriority::Highest, 2);
  for (const LONG triggered : {0, 1}) {
    std::string capture, process;
    Event seen;
    Listener listener;
    listener.onFrame = [&](std::uint32_t) {
      if (seen.Wait(0)) return;
      process = ThreadPlacement();
      seen.Set();
    };
    FakeCamera camera;
    camera.onRead = [&](unsigned char* buffer) {
      if (capture.empty()) capture = ThreadPlacement();
      return camera.NextFrame(buffer);
    };
    camera.SetObserver(&listener);
    camera.OpenCamera(0);
    camera.store.SetExtTrigger(triggered);
    camera.Play();
    seen.Wait();
    camera.Stop();
    EXPECT_EQ(capture, triggered ? high : urgent);
    EXPECT_EQ(process, triggered ? urgent : high);
  }
}

TEST(CaptureOnDemand, ReadsAgainUntilAFrameTheLimitOrStop) {
  test::ScriptedDriverHost host;  // whose time passes by sleeping alone
  const ScopedDriverHost installed(host);
  FakeCamera camera;
  int reads = 0, without = 0;
  camera.onRead = [&](unsigned char* buffer) {
    return ++reads <= without ? kReadWithoutFrame : camera.NextFrame(buffer);
  };
  camera.SetBufferSamples(kDeliverOnDemand);
  camera.OpenCamera(0);
  camera.Play();
  constexpr int kAlways = 1'000'000;
  const struct {
    LONG limit;
    int without;
    HRESULT result;
    int reads;
  } rows[] = {{10, 0, S_OK, 1},
              {10, 10, S_OK, 11},
              {10, 11, E_FAIL, 11},
              {0, kAlways, E_FAIL, 1},
              {-1, 5000, S_OK, 5001}};
  for (const auto& row : rows) {
    camera.store.SetTimeout(row.limit);
    reads = 0;
    without = row.without;
    const std::uint64_t start = host.Milliseconds();
    EXPECT_EQ(camera.GetData(nullptr, 0), row.result) << &row - rows;
    EXPECT_EQ(reads, row.reads) << &row - rows;
    EXPECT_EQ(host.Milliseconds() - start, static_cast<unsigned>(row.reads) - 1) << "it waits between reads";
  }
  EXPECT_EQ(camera.Statistics().framesDelivered, 3u);
  Event begun;
  std::atomic<bool> stopped = false;
  camera.onRead = [&](unsigned char* buffer) {
    begun.Set();
    return stopped ? camera.NextFrame(buffer) : kReadWithoutFrame;
  };
  Worker stopper([&] {
    begun.Wait();
    EXPECT_EQ(camera.Stop(), 1);
    stopped = true;
  });
  EXPECT_EQ(camera.GetData(nullptr, 0), E_FAIL);
}

}  // namespace
}  // namespace zel
