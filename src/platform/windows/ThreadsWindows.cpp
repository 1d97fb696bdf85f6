#include <process.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <chrono>
#include <new>
#include <system_error>

#include "common/Assert.h"
#include "platform/Threads.h"
#include "platform/windows/UniqueHandle.h"

namespace zel {
namespace {

static_assert(kForever == INFINITE);

UniqueHandle NotNull(HANDLE handle) {
  if (!handle) throw std::bad_alloc();
  return UniqueHandle(handle);
}

bool WaitFor(HANDLE handle, std::uint32_t milliseconds) {
  return WaitForSingleObject(handle, milliseconds) == WAIT_OBJECT_0;
}

/// The time that is left of a wait that may be interrupted.
class TimeLimit {
 public:
  explicit TimeLimit(std::uint32_t milliseconds)
      : forever_(milliseconds == kForever), end_(NowNs() + milliseconds * kNsPerMs) {}

  /// Rounded up, so that a wait never ends early; 0 when the time is over.
  std::uint32_t Left() const {
    if (forever_) return kForever;
    const std::uint64_t now = NowNs();
    return now >= end_ ? 0 : static_cast<std::uint32_t>((end_ - now + kNsPerMs - 1) / kNsPerMs);
  }

 private:
  static constexpr std::uint64_t kNsPerMs = 1'000'000;
  bool forever_;
  std::uint64_t end_;
};

/// Dispatches the messages that are there, but stops as soon as `handle` is signalled or the time is over: a
/// window that posts to itself again and again must not hold up the wait.
void DispatchMessages(HANDLE handle, const TimeLimit& limit, bool* quit) {
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    if (message.message == WM_QUIT) {
      *quit = true;
    } else {
      TranslateMessage(&message);
      DispatchMessageW(&message);
    }
    if (WaitFor(handle, 0) || limit.Left() == 0) break;
  }
}

bool WaitForPumping(HANDLE handle, std::uint32_t milliseconds) {
  const TimeLimit limit(milliseconds);
  bool quit = false;
  // What is already in the queue does not end the wait below; only what arrives after a look at it does.
  if (!WaitFor(handle, 0)) DispatchMessages(handle, limit, &quit);
  while (MsgWaitForMultipleObjects(1, &handle, FALSE, limit.Left(), QS_ALLINPUT) == WAIT_OBJECT_0 + 1) {
    DispatchMessages(handle, limit, &quit);
    if (limit.Left() == 0) break;
  }
  if (quit) PostQuitMessage(0);
  return WaitFor(handle, 0);
}

}  // namespace

struct Event::State {
  UniqueHandle handle = NotNull(CreateEventW(nullptr, TRUE, FALSE, nullptr));
};

Event::Event() : state_(std::make_unique<State>()) {}
Event::~Event() = default;
void Event::Set() {
  SetEvent(state_->handle.get());
}
void Event::Reset() {
  ResetEvent(state_->handle.get());
}
bool Event::Wait(std::uint32_t milliseconds) const {
  return WaitFor(state_->handle.get(), milliseconds);
}
bool Event::WaitPumping(std::uint32_t milliseconds) const {
  return WaitForPumping(state_->handle.get(), milliseconds);
}

struct Semaphore::State {
  UniqueHandle handle;
};

Semaphore::Semaphore(std::uint32_t initial, std::uint32_t maximum) {
  Assert(initial <= maximum && maximum >= 1 && maximum <= kMaximumCount,
         "initial <= maximum && maximum >= 1 && maximum <= kMaximumCount");
  state_ = std::make_unique<State>(State{
      NotNull(CreateSemaphoreW(nullptr, static_cast<LONG>(initial), static_cast<LONG>(maximum), nullptr))});
}
Semaphore::~Semaphore() = default;
bool Semaphore::Acquire(std::uint32_t milliseconds) {
  return WaitFor(state_->handle.get(), milliseconds);
}
bool Semaphore::Release() {
  return ReleaseSemaphore(state_->handle.get(), 1, nullptr) != 0;
}

struct Worker::State {
  std::function<void()> body;
  UniqueHandle thread;
  unsigned id = 0;

  static unsigned __stdcall Run(void* self) noexcept {
    // What the body holds goes before the thread ends, not with the Worker.
    const std::function<void()> body = std::move(static_cast<State*>(self)->body);
    body();
    return 0;
  }
};

Worker::Worker(std::function<void()> body) : state_(std::make_unique<State>()) {
  state_->body = std::move(body);
  const auto thread = _beginthreadex(nullptr, 0, State::Run, state_.get(), CREATE_SUSPENDED, &state_->id);
  if (!thread) throw std::system_error(errno, std::generic_category(), "starting a thread");
  state_->thread.reset(reinterpret_cast<HANDLE>(thread));
  ResumeThread(state_->thread.get());
}

Worker::~Worker() {
  Assert(!IsCurrentThread(), "!IsCurrentThread()");
  Wait();
}

void Worker::SetPriority(WorkerPriority priority) {
  static_assert(THREAD_PRIORITY_HIGHEST == 2 && THREAD_PRIORITY_TIME_CRITICAL == 15);
  int value = THREAD_PRIORITY_NORMAL;
  if (priority == WorkerPriority::Highest) value = THREAD_PRIORITY_HIGHEST;
  if (priority == WorkerPriority::TimeCritical) value = THREAD_PRIORITY_TIME_CRITICAL;
  SetThreadPriority(state_->thread.get(), value);
}

void Worker::SetAffinity(std::uint64_t processorMask) {
  SetThreadAffinityMask(state_->thread.get(), static_cast<DWORD_PTR>(processorMask));
}

bool Worker::Wait(std::uint32_t milliseconds) const {
  return WaitFor(state_->thread.get(), milliseconds);
}
bool Worker::WaitPumping(std::uint32_t milliseconds) const {
  return WaitForPumping(state_->thread.get(), milliseconds);
}
bool Worker::IsCurrentThread() const {
  return GetCurrentThreadId() == state_->id;
}

namespace {

struct Detached {
  std::function<void()> body;
  HMODULE module;

  static DWORD WINAPI Run(void* given) noexcept {
    std::unique_ptr<Detached> self(static_cast<Detached*>(given));
    const HMODULE module = self->module;
    self->body();
    self.reset();
    // Returning would lead through code that may be gone by then.
    FreeLibraryAndExitThread(module, 0);
  }
};

}  // namespace

void StartDetached(std::function<void()> body) {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCWSTR>(&Detached::Run),
                     &module);
  auto detached = std::make_unique<Detached>(std::move(body), module);
  const UniqueHandle thread(CreateThread(nullptr, 0, Detached::Run, detached.get(), 0, nullptr));
  if (!thread) {
    const auto error = static_cast<int>(GetLastError());
    FreeLibrary(module);
    throw std::system_error(error, std::system_category(), "starting a thread");
  }
  static_cast<void>(detached.release());
}

unsigned ProcessorCount() {
  DWORD_PTR ours = 0, all = 0;
  GetProcessAffinityMask(GetCurrentProcess(), &ours, &all);
  return static_cast<unsigned>(std::max(1, std::popcount(static_cast<std::uint64_t>(ours))));
}

std::uint64_t NowNs() {
  return static_cast<std::uint64_t>(
      std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count());
}

}  // namespace zel
