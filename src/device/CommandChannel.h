#pragma once

#include <cstdint>

#include "platform/CZELCritSec.h"
#include "platform/Threads.h"

namespace zel {

enum class ThreadCommand : std::int32_t { Resume = 0, Pause = 1, Exit = 2, Run = 3 };

/// How the application thread steers the capture worker: a command word, an acknowledgement, and a pause that
/// lasts until the next command.
class CommandChannel {
 public:
  explicit CommandChannel(CZELCritSec& lock) : lock_(lock) {}

  void Open();  ///< a worker is there from now on; before, `Send` does nothing
  /// Gives the command and waits, pumping messages, until the worker has taken it or is gone, or the time is
  /// over; the worker then still obeys it as soon as it returns from the driver.
  void Send(ThreadCommand command, std::uint32_t milliseconds);
  void SendExit();  ///< does not wait

  /// The worker's side: carries out pausing and resuming. True to read the next frame, false to end.
  bool AwaitRun();
  void Close();  ///< the worker is gone

 private:
  void Store(ThreadCommand command);

  CZELCritSec& lock_;  ///< guards the following
  ThreadCommand command_ = ThreadCommand::Run;
  std::int32_t pauseCount_ = 0;
  bool open_ = false;
  Event resume_;
  Event acknowledge_;
};

}  // namespace zel
