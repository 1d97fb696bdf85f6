#include <gtest/gtest.h>

#include "common/ResultCodes.h"
#include "device/FrameQueue.h"
#include "device/RawBuffers.h"
#include "imaging/COrvaneImageImpl32.h"

namespace zel {
namespace {

TEST(RawBuffers, NewestWinsOlderFirstNeverTheOneInUse) {
  CZELCritSec lock;
  RawBuffers buffers(lock);
  bool overwritten = true;
  EXPECT_EQ(buffers.BeginFill(&overwritten), nullptr);
  ASSERT_TRUE(buffers.Allocate(64));
  unsigned char* const first = buffers.Buffer(0);
  unsigned char* const second = buffers.Buffer(1);
  const auto fill = [&](unsigned char* expected, bool expectOverwritten, bool ok = true) {
    EXPECT_EQ(buffers.BeginFill(&overwritten), expected);
    EXPECT_EQ(overwritten, expectOverwritten);
    buffers.EndFill(ok);
  };
  fill(first, false, false);  // a failed read gives the buffer back
  fill(first, false);
  fill(second, false);
  fill(first, true);  // both filled: the first again, now the newer one
  EXPECT_EQ(buffers.BeginProcess(), second);
  fill(first, true);  // the second is in use
  buffers.EndProcess();
  EXPECT_EQ(buffers.BeginProcess(), first);
  fill(second, false);
  fill(second, true);  // the first is in use
  buffers.EndProcess();
  EXPECT_EQ(buffers.BeginProcess(), second);
  fill(first, false);
  buffers.ShutDown();
  buffers.EndProcess();
  EXPECT_EQ(buffers.BeginProcess(), nullptr);
  EXPECT_EQ(buffers.BeginFill(&overwritten), nullptr);
  EXPECT_FALSE(buffers.Allocate(0));
  EXPECT_EQ(buffers.Buffer(2), nullptr);
}

class Queue : public testing::Test {
 protected:
  static std::unique_ptr<COrvaneImageImpl32> Picture() {
    auto image = std::make_unique<COrvaneImageImpl32>(0);
    image->SetOutputFormat(0);
    image->SetWidth(4);
    image->SetHeight(1);
    image->AllocateBuffers();
    return image;
  }
  bool Put(unsigned char value) {
    frame->GetBuffer()[0] = value;
    return queue.Put(*frame);
  }
  int Get(std::uint32_t milliseconds = 0) {
    unsigned char pixels[4] = {};
    return queue.Get(pixels, milliseconds) == S_OK ? pixels[0] : -1;
  }

  CZELCritSec lock;
  FrameQueue queue{lock};
  std::unique_ptr<COrvaneImageImpl32> frame = Picture();
};

TEST_F(Queue, HoldsTheTwoNewestInOrder) {
  EXPECT_FALSE(Put(1));  // without copies frames just pass
  EXPECT_EQ(Get(), -1);
  queue.SetCopies(Picture(), Picture());
  EXPECT_FALSE(Put(1));
  EXPECT_FALSE(Put(2));
  EXPECT_TRUE(Put(3));
  EXPECT_EQ(Get(), 2);
  EXPECT_FALSE(Put(4));
  EXPECT_EQ(Get(), 3);
  EXPECT_EQ(Get(), 4);
  EXPECT_EQ(Get(1), -1);
  Put(5);
  queue.Clear();
  EXPECT_EQ(Get(), -1);
  Put(6);
  unsigned char pixels[4] = {9, 9, 9, 9};
  EXPECT_EQ(queue.Get(nullptr, 0), E_FAIL);
  EXPECT_EQ(queue.Get({pixels, 3}, 0), E_FAIL);
  EXPECT_EQ(pixels[0], 9);
  EXPECT_EQ(Get(), 6) << "what does not fit stays";
  Put(7);
  queue.Close();
  EXPECT_EQ(Get(), -1);
}

// A wake-up without a frame, as when another reader was faster, neither ends a wait nor prolongs it.
TEST_F(Queue, WakeUpsWithoutAFrame) {
  queue.SetCopies(Picture(), Picture());
  const auto wakeUp = [&] {
    const CritSecGuard guard(lock);
    Put(1);
    queue.Clear();
  };
  for (const bool comes : {true, false}) {
    Event begun, ended;
    int got = 0;
    const Worker reader([&] {
      begun.Set();
      got = Get(comes ? kForever : 50);
      ended.Set();
    });
    begun.Wait();
    constexpr std::uint64_t kHangNs = 20'000'000'000;
    const std::uint64_t start = NowNs();
    for (int n = 0; comes ? n < 300 : !ended.Wait(0) && NowNs() - start < kHangNs; ++n) {
      wakeUp();
      std::this_thread::yield();
    }
    if (comes) Put(7);
    EXPECT_TRUE(ended.Wait(comes ? kForever : 0));
    EXPECT_EQ(got, comes ? 7 : -1);
  }
}

}  // namespace
}  // namespace zel
