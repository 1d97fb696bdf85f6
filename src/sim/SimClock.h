#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>

#include "platform/Threads.h"

namespace zel {

/// The time by which simulated controllers are busy or done, and in which their hosts wait. Virtual time, for
/// tests, passes only by the waits themselves, and at once. Any thread.
class SimClock {
 public:
  enum class Kind { Real, Virtual };

  explicit SimClock(Kind kind) : kind_(kind) {}

  std::uint64_t Milliseconds() const { return kind_ == Kind::Virtual ? passed_.load() : NowNs() / 1'000'000; }

  void Sleep(std::uint32_t milliseconds) {
    if (kind_ == Kind::Real) {
      // Some systems end a sleep early, by up to a tick of theirs.
      const std::uint64_t start = Milliseconds();
      for (std::uint64_t passed = 0; passed < milliseconds; passed = Milliseconds() - start)
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds - passed));
      return;
    }
    passed_ += milliseconds;
  }

 private:
  const Kind kind_;
  std::atomic<std::uint64_t> passed_ = 0;
};

/// Something in a controller that takes its time.
class SimTimer {
 public:
  explicit SimTimer(const SimClock& clock) : clock_(clock) {}

  void Start(std::uint32_t milliseconds) { end_ = clock_.Milliseconds() + milliseconds; }
  bool IsRunning() const { return clock_.Milliseconds() < end_; }

 private:
  const SimClock& clock_;
  std::uint64_t end_ = 0;
};

}  // namespace zel
