#include "device/CommandChannel.h"

namespace zel {

void CommandChannel::Open() {
  const CritSecGuard guard(lock_);
  open_ = true;
}

void CommandChannel::Close() {
  const CritSecGuard guard(lock_);
  open_ = false;
  acknowledge_.Set();
}

void CommandChannel::Store(ThreadCommand command) {
  command_ = command;
  if (pauseCount_ != 0) resume_.Set();
}

void CommandChannel::Send(ThreadCommand command, std::uint32_t milliseconds) {
  {
    const CritSecGuard guard(lock_);
    // An exit is final: nobody would acknowledge after it.
    if (!open_ || command_ == ThreadCommand::Exit) return;
    acknowledge_.Reset();
    Store(command);
  }
  acknowledge_.WaitPumping(milliseconds);
}

void CommandChannel::SendExit() {
  const CritSecGuard guard(lock_);
  Store(ThreadCommand::Exit);
}

bool CommandChannel::AwaitRun() {
  for (;;) {
    bool paused = false;
    {
      const CritSecGuard guard(lock_);
      paused = pauseCount_ != 0;
    }
    if (paused) resume_.Wait();
    const CritSecGuard guard(lock_);
    if (paused) --pauseCount_;
    switch (command_) {
      case ThreadCommand::Resume:
        pauseCount_ = 0;
        command_ = ThreadCommand::Run;
        acknowledge_.Set();
        break;
      case ThreadCommand::Pause:
        ++pauseCount_;
        resume_.Reset();
        acknowledge_.Set();
        break;
      case ThreadCommand::Exit:
        return false;
      case ThreadCommand::Run:
        return true;
    }
  }
}

}  // namespace zel
