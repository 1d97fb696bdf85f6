#include "platform/Threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>

namespace zel {
namespace {

constexpr std::uint32_t kLong = 60'000;  // milliseconds; reached only by a fault

TEST(Event, StaysSetForAllThatWaitUntilReset) {
  Event event;
  std::atomic<int> woken = 0;
  {
    Worker first([&] { woken += event.Wait(kLong); });
    Worker second([&] { woken += event.WaitPumping(kLong); });
    event.Set();
  }
  EXPECT_EQ(woken, 2);
  EXPECT_TRUE(event.Wait());
  event.Reset();
  EXPECT_FALSE(event.Wait(0));
}

TEST(Waits, TakeTheWholeTimeAndNoLonger) {
  constexpr std::uint32_t kMilliseconds = 30;
  Event event;
  Semaphore empty(0, 1);
  Worker running([&] { event.Wait(kLong); });
  const std::function<bool()> waits[] = {
      [&] { return event.Wait(kMilliseconds); }, [&] { return event.WaitPumping(kMilliseconds); },
      [&] { return empty.Acquire(kMilliseconds); }, [&] { return running.Wait(kMilliseconds); },
      [&] { return running.WaitPumping(kMilliseconds); }};
  for (const auto& wait : waits) {
    const std::uint64_t before = NowNs();
    EXPECT_FALSE(wait());
    const std::uint64_t milliseconds = (NowNs() - before) / 1'000'000;
    // Some systems end a wait up to a clock tick early.
    EXPECT_GE(milliseconds, kMilliseconds - 16) << &wait - waits;
    EXPECT_LT(milliseconds, kLong / 2) << &wait - waits;
  }
  event.Set();
}

TEST(Semaphore, CountsBetweenZeroAndItsMaximum) {
  Semaphore semaphore(1, 2);
  for (const int count : {1, 2}) {
    for (int n = 0; n < count; ++n) EXPECT_TRUE(semaphore.Acquire(0));
    EXPECT_FALSE(semaphore.Acquire(0));
    EXPECT_TRUE(semaphore.Release());
    EXPECT_TRUE(semaphore.Release());
    EXPECT_FALSE(semaphore.Release());
  }
}

TEST(Semaphore, EveryReleaseLetsExactlyOneThrough) {
  constexpr int kRounds = 1000;
  Semaphore ping(0, 1), pong(1, 1);
  int shared = 0;  // not atomic: the semaphores must order the two threads
  const auto play = [&](Semaphore& mine, Semaphore& yours) {
    for (int n = 0; n < kRounds && mine.Acquire(kLong); ++n) {
      ++shared;
      yours.Release();
    }
  };
  {
    Worker other([&] { play(ping, pong); });
    play(pong, ping);
  }
  EXPECT_EQ(shared, 2 * kRounds);
}

TEST(Worker, IsJoinedAndLetsGoOfWhatItsBodyHolds) {
  bool done = false, inside = false, released = false;  // not atomic: the end of the thread must order them
  Event go;
  Worker worker([&, held = std::shared_ptr<void>(nullptr, [&](void*) { released = !worker.Wait(0); })] {
    done = go.Wait(kLong);
    inside = worker.IsCurrentThread();
    worker.SetPriority(WorkerPriority::TimeCritical);
  });
  {
    const Worker joined([&] { go.Wait(kLong); });
    EXPECT_FALSE(worker.IsCurrentThread());
    EXPECT_FALSE(worker.Wait(0));
    worker.SetPriority(WorkerPriority::Highest);
    worker.SetAffinity(0);  // refused everywhere, and silently
    go.Set();
  }
  EXPECT_TRUE(worker.WaitPumping());
  EXPECT_TRUE(worker.Wait(0));
  EXPECT_TRUE(done);
  EXPECT_TRUE(inside);
  EXPECT_TRUE(released) << "before the thread ended";
  worker.SetPriority(WorkerPriority::Normal);
}

}  // namespace
}  // namespace zel
