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
  EXPECT_EQ(queue.Get(nullptr, 0), E_FAIL);
  EXPECT_EQ(Get(), 6);
  Put(7);
  queue.Close();
  EXPECT_EQ(Get(), -1);
}

}  // namespace
}  // namespace zel
