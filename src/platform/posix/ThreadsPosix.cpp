#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

#include "common/Assert.h"
#include "platform/Threads.h"

namespace zel {
namespace {

using Clock = std::chrono::steady_clock;

/// Waits until `ready()` or the time is over; true when ready.
template <class Ready>
bool WaitFor(std::condition_variable& changed, std::unique_lock<std::mutex>& lock, std::uint32_t milliseconds,
             Ready ready) {
  if (milliseconds == 0) return ready();  // a look: even a wait that is over costs the timer's slack
  if (milliseconds != kForever) {
    return changed.wait_until(lock, Clock::now() + std::chrono::milliseconds(milliseconds), ready);
  }
  changed.wait(lock, ready);
  return true;
}

// Thread priorities as nice values. Not real-time classes: on a small machine a busy worker would then starve
// the application it works for.
int NiceValue(WorkerPriority priority) {
  switch (priority) {
    case WorkerPriority::Highest:
      return -10;
    case WorkerPriority::TimeCritical:
      return -20;
    case WorkerPriority::Normal:
      break;
  }
  return 0;
}

}  // namespace

struct Event::State {
  std::mutex mutex;
  std::condition_variable changed;
  bool set = false;
};

Event::Event() : state_(std::make_unique<State>()) {}
Event::~Event() = default;

void Event::Set() {
  const std::lock_guard lock(state_->mutex);
  state_->set = true;
  // Under the lock: a waiter that then destroys the event can't get ahead of this call.
  state_->changed.notify_all();
}

void Event::Reset() {
  const std::lock_guard lock(state_->mutex);
  state_->set = false;
}

bool Event::Wait(std::uint32_t milliseconds) const {
  std::unique_lock lock(state_->mutex);
  return WaitFor(state_->changed, lock, milliseconds, [this] { return state_->set; });
}

bool Event::WaitPumping(std::uint32_t milliseconds) const {
  return Wait(milliseconds);
}

struct Semaphore::State {
  std::mutex mutex;
  std::condition_variable changed;
  std::uint32_t count;
  const std::uint32_t maximum;

  State(std::uint32_t initial, std::uint32_t most) : count(initial), maximum(most) {}
};

Semaphore::Semaphore(std::uint32_t initial, std::uint32_t maximum) {
  Assert(initial <= maximum && maximum >= 1 && maximum <= kMaximumCount,
         "initial <= maximum && maximum >= 1 && maximum <= kMaximumCount");
  state_ = std::make_unique<State>(initial, maximum);
}
Semaphore::~Semaphore() = default;

bool Semaphore::Acquire(std::uint32_t milliseconds) {
  std::unique_lock lock(state_->mutex);
  if (!WaitFor(state_->changed, lock, milliseconds, [this] { return state_->count > 0; })) return false;
  --state_->count;
  return true;
}

bool Semaphore::Release() {
  const std::lock_guard lock(state_->mutex);
  if (state_->count == state_->maximum) return false;
  ++state_->count;
  state_->changed.notify_one();
  return true;
}

struct Worker::State {
  Event ended;
  std::mutex mutex;  ///< guards what follows; the thread's number is good only while it runs
  pid_t number = 0;
  std::optional<int> nice;
  std::optional<cpu_set_t> processors;
  std::thread thread;  ///< set before the constructor returns, then constant

  void SetNumber(pid_t value) {
    const std::lock_guard lock(mutex);
    number = value;
    ApplyWishes();
  }

  /// With the lock held. A refusal changes nothing and is no error.
  void ApplyWishes() {
    if (number == 0) return;
    if (nice) static_cast<void>(setpriority(PRIO_PROCESS, static_cast<id_t>(number), *nice));
    if (processors) static_cast<void>(sched_setaffinity(number, sizeof *processors, &*processors));
  }
};

Worker::Worker(std::function<void()> body) : state_(std::make_unique<State>()) {
  state_->thread = std::thread([state = state_.get(), body = std::move(body)]() mutable noexcept {
    state->SetNumber(gettid());
    body();
    body = nullptr;  // what the body holds goes before the thread ends, not with the Worker
    state->SetNumber(0);
    state->ended.Set();
  });
}

Worker::~Worker() {
  Assert(!IsCurrentThread(), "!IsCurrentThread()");
  state_->thread.join();
}

void Worker::SetPriority(WorkerPriority priority) {
  const std::lock_guard lock(state_->mutex);
  state_->nice = NiceValue(priority);
  state_->ApplyWishes();
}

void Worker::SetAffinity(std::uint64_t processorMask) {
  const std::lock_guard lock(state_->mutex);
  cpu_set_t& processors = state_->processors.emplace();
  CPU_ZERO(&processors);
  for (unsigned bit = 0; bit < 64; ++bit) {
    if (processorMask >> bit & 1) CPU_SET(bit, &processors);
  }
  state_->ApplyWishes();
}

bool Worker::Wait(std::uint32_t milliseconds) const {
  return state_->ended.Wait(milliseconds);
}
bool Worker::WaitPumping(std::uint32_t milliseconds) const {
  return Wait(milliseconds);
}
bool Worker::IsCurrentThread() const {
  return state_->thread.get_id() == std::this_thread::get_id();
}

void StartDetached(std::function<void()> body) {
  std::thread(std::move(body)).detach();
}

unsigned ProcessorCount() {
  cpu_set_t ours;
  if (sched_getaffinity(0, sizeof ours, &ours) != 0) return std::max(1u, std::thread::hardware_concurrency());
  return static_cast<unsigned>(std::max(1, CPU_COUNT(&ours)));
}

std::uint64_t NowNs() {
  return static_cast<std::uint64_t>(std::chrono::nanoseconds(Clock::now().time_since_epoch()).count());
}

}  // namespace zel
