#include <gtest/gtest.h>

#include <random>

#include "FakeCamera.h"
#include "common/ResultCodes.h"

namespace zel {
namespace {

std::uint64_t ElapsedMs(const std::function<void()>& action) {
  const std::uint64_t start = NowNs();
  action();
  return (NowNs() - start) / 1'000'000;
}

TEST(CaptureEngine, CallbackModeDeliversEveryProcessedFrame) {
  Listener listener;
  FakeCamera camera;
  camera.SetObserver(&listener);
  camera.OpenCamera(0);
  ASSERT_EQ(camera.Play(), 1);
  listener.AwaitFrames(200);
  EXPECT_EQ(camera.Stop(), 1);
  EXPECT_TRUE(listener.inOrder);
  EXPECT_EQ(listener.states, (std::vector<LONG>{kStateOpened, kStatePlaying, kStateStopped}));
  EXPECT_EQ(camera.aborts, 1);
  EXPECT_EQ(camera.ends, 1);
  const CaptureStatistics statistics = camera.Statistics();
  EXPECT_EQ(statistics.framesRead, camera.frames);
  EXPECT_EQ(statistics.framesDelivered, statistics.framesProcessed);
  EXPECT_GE(statistics.framesDelivered, 200u);
  EXPECT_GE(statistics.framesRead, statistics.framesProcessed + statistics.framesOverwritten);
  EXPECT_LE(statistics.framesRead, statistics.framesProcessed + statistics.framesOverwritten + 2);
}

TEST(CaptureEngine, QueueModeHandsOverAndTimesOut) {
  Listener listener;
  FakeCamera camera;
  camera.SetObserver(&listener);
  camera.SetBufferSamples(kDeliverQueue);
  camera.onRead = [&](unsigned char* buffer) { return camera.PermittedFrame(buffer); };
  camera.OpenCamera(0);
  unsigned char pixels[kFrameBytes];
  EXPECT_EQ(camera.GetData(pixels, 0x2000), kResultTimeout);  // not capturing: at once
  ASSERT_EQ(camera.Play(), 1);
  camera.SetBufferSamples(kDeliverOnDemand);  // for the next capture
  for (std::uint32_t n = 1; n <= 3; ++n) {
    camera.permits.Release();
    ASSERT_EQ(camera.GetData(pixels, 0x2000), S_OK);
    EXPECT_EQ(FrameNumber(pixels), n);
  }
  camera.store.SetTimeout(5);
  EXPECT_EQ(camera.GetData(pixels, 0x2000), kResultTimeout);
  EXPECT_EQ(camera.Statistics().framesDelivered, 3u);
  // One that waits without limit ends with the capture.
  camera.store.SetTimeout(-1);
  HRESULT result = S_OK;
  Event waiting;
  Worker client([&] {
    unsigned char other[kFrameBytes];
    waiting.Set();
    result = camera.GetDataQueued(other);
  });
  waiting.Wait();
  EXPECT_EQ(camera.Stop(), 1);
  client.Wait();
  EXPECT_EQ(result, kResultTimeout);
  EXPECT_EQ(camera.GetData(pixels, 0x2000), E_FAIL);
  EXPECT_EQ(listener.last, 0u);  // no frame events in this mode
}

TEST(CaptureEngine, OnDemandReadsInsideGetData) {
  FakeCamera camera;
  camera.SetBufferSamples(kDeliverOnDemand);
  std::thread::id reader;
  LONG answer = 1;
  camera.onRead = [&](unsigned char* buffer) {
    reader = std::this_thread::get_id();
    return answer ? camera.NextFrame(buffer) : 0;
  };
  camera.OpenCamera(0);
  ASSERT_EQ(camera.Play(), 1);
  unsigned char untouched = 77;
  for (std::uint32_t n = 1; n <= 3; ++n) {
    EXPECT_EQ(camera.GetData(&untouched, 0x2000), S_OK);
    EXPECT_EQ(FrameNumber(camera.GetImage()->GetBuffer()), n);
  }
  EXPECT_EQ(untouched, 77);
  EXPECT_EQ(reader, std::this_thread::get_id());
  answer = 0;
  EXPECT_EQ(camera.GetData(nullptr, 0), E_FAIL);
  EXPECT_EQ(camera.Pause(), 1);
  EXPECT_EQ(camera.Play(), 1);
  EXPECT_EQ(camera.Stop(), 1);
  EXPECT_EQ(camera.frames, 3u);
  EXPECT_EQ(camera.aborts, 0);
}

TEST(CaptureEngine, PauseHoldsTheSameCapture) {
  Listener listener;
  FakeCamera camera;
  camera.SetObserver(&listener);
  camera.OpenCamera(0);
  camera.Play();
  const COrvaneImage* image = camera.GetImage();
  for (int round = 0; round < 20; ++round) {
    listener.AwaitFrames(1);
    ASSERT_EQ(camera.Pause(), 1);
    const std::uint32_t frames = camera.frames;
    ASSERT_EQ(camera.Play(), 1);
    listener.AwaitFrames(2);
    EXPECT_GT(camera.frames, frames);
  }
  EXPECT_EQ(camera.GetImage(), image);
  ASSERT_EQ(camera.Pause(), 1);
  const std::uint32_t paused = camera.frames;
  EXPECT_EQ(camera.Stop(), 1);
  EXPECT_EQ(camera.frames, paused);
  EXPECT_TRUE(listener.inOrder);
}

TEST(CaptureEngine, TriggeredStopTakesTheWholePatience) {
  Listener listener;
  FakeCamera camera;
  camera.SetObserver(&listener);
  camera.OpenCamera(0);
  camera.store.SetExtTrigger(1);
  ASSERT_EQ(camera.Play(), 1);
  camera.store.SetExtTrigger(0);  // for the next capture
  listener.AwaitFrames(5);
  const std::uint64_t elapsed = ElapsedMs([&] { EXPECT_EQ(camera.Stop(), 1); });
  EXPECT_GE(elapsed, 1990u);
  EXPECT_EQ(camera.triggeredReads, static_cast<int>(camera.frames));
  EXPECT_TRUE(listener.inOrder);
}

TEST(CaptureEngine, ReadThatOutlivesStopHurtsNobody) {
  for (const LONG next : {kDeliverCallback, kDeliverOnDemand}) {
    SCOPED_TRACE(next);
    Listener listener;
    Event blocked, release;
    std::atomic<bool> stuck = true;
    FakeCamera camera;  // goes first
    camera.SetObserver(&listener);
    camera.onRead = [&](unsigned char* buffer) {
      if (!stuck.exchange(false)) return camera.NextFrame(buffer);
      blocked.Set();
      release.Wait();
      return camera.NextFrame(buffer);  // writes to the buffer of a capture that is over
    };
    camera.OpenCamera(0);
    ASSERT_EQ(camera.Play(), 1);
    blocked.Wait();
    EXPECT_GE(ElapsedMs([&] { EXPECT_EQ(camera.Stop(), 1); }), 1990u);
    EXPECT_EQ(camera.GetImage(), nullptr);
    camera.SetBufferSamples(next);
    ASSERT_EQ(camera.Play(), 1);
    if (next == kDeliverOnDemand) {
      camera.store.SetTimeout(1);
      EXPECT_EQ(camera.GetData(nullptr, 0), E_FAIL);
      camera.store.SetTimeout(20000);
      release.Set();
      EXPECT_EQ(camera.GetData(nullptr, 0), S_OK);
    } else {
      release.Set();
      listener.AwaitFrames(3);
    }
    EXPECT_EQ(camera.mostReaders, 1);
    if (next == kDeliverCallback) {
      // And once more: destruction during a read, which comes back when the streaming has been ended.
      blocked.Reset();
      release.Reset();
      stuck = true;
      blocked.Wait();
      camera.onEnd = [&] { release.Set(); };
    }
  }
}

TEST(CaptureEngine, ObserverMayStopAndPlay) {
  Listener listener;
  std::atomic<int> stops = 0;
  std::atomic<bool> again = true;
  Event over;
  FakeCamera camera;
  listener.onFrame = [&](std::uint32_t) {
    if (++stops % 3 != 0) return;
    EXPECT_EQ(camera.Stop(), 1);
    EXPECT_EQ(camera.Stop(), 0);
    EXPECT_EQ(camera.GetStatus(), kStateStopped);
    if (again) {
      again = false;
      EXPECT_EQ(camera.Play(), 1);
    } else {
      over.Set();
    }
  };
  camera.SetObserver(&listener);
  camera.OpenCamera(0);
  ASSERT_EQ(camera.Play(), 1);
  over.Wait();
  EXPECT_EQ(camera.Stop(), 0);
}

TEST(CaptureEngine, InstantFailuresLeaveTheProcessorAlone) {
  FakeCamera camera;
  Event enough;
  int reads = 0;
  camera.onRead = [&](unsigned char*) {
    if (++reads == 100) enough.Set();
    return LONG{0};
  };
  camera.OpenCamera(0);
  camera.Play();
  EXPECT_GE(ElapsedMs([&] { enough.Wait(); }), 90u);  // a millisecond each
  camera.Stop();
  EXPECT_GE(camera.Statistics().readFailures, 99u);
}

TEST(CaptureEngine, RandomRounds) {
  std::mt19937 random(1);
  const auto pick = [&](unsigned n) { return random() % n; };
  Listener listener;
  FakeCamera camera;
  camera.SetObserver(&listener);
  camera.OpenCamera(0);
  camera.onRead = [&](unsigned char* buffer) {
    return camera.frames % 7 == 6 && ++camera.frames ? LONG{0} : camera.NextFrame(buffer);
  };
  unsigned char pixels[kFrameBytes];
  for (int round = 0; round < 500; ++round) {
    SCOPED_TRACE(round);
    const LONG mode = static_cast<LONG>(pick(3));
    camera.SetBufferSamples(mode);
    camera.store.SetOutputFormat(mode != kDeliverCallback && pick(8) == 0 ? 5 : 0);
    camera.store.SetTimeout(mode == kDeliverCallback ? 1 : 20000);
    std::uint32_t last = 0;
    for (unsigned steps = pick(8); steps-- > 0;) {
      switch (pick(4)) {
        case 0:
          ASSERT_EQ(camera.Play(), 1);
          break;
        case 1:
          camera.Pause();
          break;
        case 2:
          camera.store.SetColorGain(kColorGainRed, static_cast<LONG>(pick(300)));
          break;
        default: {
          if (camera.GetStatus() != kStatePlaying || camera.GetImage()->GetOutputFormat() != 0) break;
          const HRESULT result = camera.GetData(pixels, 0x2000);
          if (mode == kDeliverQueue) {
            ASSERT_EQ(result, S_OK);
            ASSERT_GT(FrameNumber(pixels), last);
            last = FrameNumber(pixels);
          }
        }
      }
    }
    const bool capturing = camera.GetStatus() == kStatePlaying || camera.GetStatus() == kStatePaused;
    ASSERT_EQ(camera.Stop(), capturing ? 1 : 0);
    ASSERT_EQ(camera.GetImage(), nullptr);
  }
  EXPECT_EQ(camera.mostReaders, 1);
  EXPECT_TRUE(listener.inOrder);
}

}  // namespace
}  // namespace zel
