#include <gtest/gtest.h>

#include <functional>

#include "platform/ComponentTypes.h"
#include "platform/Threads.h"

namespace zel {
namespace {

constexpr std::uint32_t kLong = 60'000;  // milliseconds; reached only by a fault

/// A window without a face that calls a function for each message posted to it.
class MessageWindow {
 public:
  explicit MessageWindow(std::function<void()> onMessage) : onMessage_(std::move(onMessage)) {
    SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(Procedure));
  }
  ~MessageWindow() { DestroyWindow(window_); }

  bool Post() const { return PostMessageW(window_, WM_APP, 0, 0) != 0; }

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wide, LPARAM param) {
    if (message != WM_APP) return DefWindowProcW(window, message, wide, param);
    reinterpret_cast<MessageWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA))->onMessage_();
    return 0;
  }

  std::function<void()> onMessage_;
  HWND window_ = CreateWindowW(L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
};

TEST(WaitPumping, DispatchesMessagesThatEndTheWait) {
  Event event;
  MessageWindow window([&] { event.Set(); });
  ASSERT_TRUE(window.Post());
  MSG seen;  // a message that somebody has looked at no longer ends a wait by itself
  PeekMessageW(&seen, nullptr, 0, 0, PM_NOREMOVE);
  EXPECT_FALSE(event.Wait(1)) << "only the pumping wait dispatches";
  EXPECT_TRUE(event.WaitPumping(kLong));
  event.Reset();
  const Worker poster([&] { window.Post(); });
  EXPECT_TRUE(event.WaitPumping(kLong));
}

TEST(WaitPumping, TakesThreadMessagesAndPostsQuitAgain) {
  PostThreadMessageW(GetCurrentThreadId(), WM_APP, 0, 0);
  PostQuitMessage(3);
  EXPECT_FALSE(Event().WaitPumping(20));
  MSG message;
  ASSERT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
  EXPECT_EQ(message.message, static_cast<UINT>(WM_QUIT));
  EXPECT_FALSE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
}

TEST(WaitPumping, KeepsItsTimeBesideAWindowThatNeverRests) {
  Event event;
  int messages = 0, last = -1;
  MessageWindow window([&] {
    if (++messages == last) event.Set();
    window.Post();
  });
  ASSERT_TRUE(window.Post());
  const std::uint64_t before = NowNs();
  EXPECT_FALSE(event.WaitPumping(50));
  EXPECT_GE(NowNs() - before, 50'000'000u);
  EXPECT_GT(messages, 0);
  last = messages + 100;
  EXPECT_TRUE(event.WaitPumping(kLong));
  EXPECT_EQ(messages, last);
}

TEST(WorkerWindows, PrioritiesAndAffinityReachTheThread) {
  for (const auto& [wish, value] : {std::pair{WorkerPriority::Highest, 2},
                                    {WorkerPriority::TimeCritical, 15},
                                    {WorkerPriority::Normal, 0}}) {
    Event go;
    int priority = -1;
    DWORD_PTR affinity = 0;
    Worker worker([&] {
      go.Wait(kLong);
      priority = GetThreadPriority(GetCurrentThread());
      affinity = SetThreadAffinityMask(GetCurrentThread(), 1);
    });
    worker.SetPriority(wish);
    worker.SetAffinity(1);
    go.Set();
    ASSERT_TRUE(worker.Wait(kLong));
    EXPECT_EQ(priority, value);
    EXPECT_EQ(affinity, 1u);
  }
}

}  // namespace
}  // namespace zel
