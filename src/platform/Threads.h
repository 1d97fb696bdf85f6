#pragma once

#include <cstdint>
#include <functional>
#include <memory>

/// Threads, events and semaphores of the two systems behind one face.
namespace zel {

constexpr std::uint32_t kForever = 0xFFFFFFFFu;  ///< milliseconds

/// A manual-reset event: once set, all waits pass until `Reset`. Any thread.
class Event {
 public:
  Event();  ///< not set; throws std::bad_alloc when the system has no more of them
  ~Event();
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;

  void Set();
  void Reset();
  /// True when set within the time. Does not pump messages.
  bool Wait(std::uint32_t milliseconds = kForever) const;
  /// The same, but on Windows keeps dispatching this thread's window messages meanwhile, so that an apartment
  /// and its windows stay alive; a WM_QUIT that came by is posted again afterwards.
  bool WaitPumping(std::uint32_t milliseconds = kForever) const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

/// A counting semaphore. Any thread.
class Semaphore {
 public:
  static constexpr std::uint32_t kMaximumCount = 0x7FFFFFFFu;

  /// 0 <= initial <= maximum, 1 <= maximum <= kMaximumCount.
  Semaphore(std::uint32_t initial, std::uint32_t maximum);
  ~Semaphore();
  Semaphore(const Semaphore&) = delete;
  Semaphore& operator=(const Semaphore&) = delete;

  bool Acquire(std::uint32_t milliseconds = kForever);
  bool Release();  ///< false, and nothing done, when the count is at its maximum

 private:
  struct State;
  std::unique_ptr<State> state_;
};

enum class WorkerPriority { Normal, Highest, TimeCritical };

/// A thread that is joined when its object goes.
class Worker {
 public:
  /// Starts at once; throws std::system_error or std::bad_alloc when no thread can be made. The body and what
  /// it holds are gone when the thread has ended.
  explicit Worker(std::function<void()> body);
  ~Worker();  ///< waits for the thread; never let it run on the thread itself
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  /// Both are wishes: a system that refuses (Linux without rights) leaves the thread as it is.
  void SetPriority(WorkerPriority priority);
  void SetAffinity(std::uint64_t processorMask);

  /// Waits until the thread has ended. True when it did within the time. Never call it on the thread itself.
  bool Wait(std::uint32_t milliseconds = kForever) const;
  bool WaitPumping(std::uint32_t milliseconds = kForever) const;
  bool IsCurrentThread() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

/// Starts a thread that nobody waits for. The library stays loaded until the thread has left it. Throws
/// std::system_error or std::bad_alloc, with the body gone, when no thread can be made.
void StartDetached(std::function<void()> body);

/// Processors that this process may use, at least 1.
unsigned ProcessorCount();

/// Monotonic nanoseconds.
std::uint64_t NowNs();

}  // namespace zel
