#include "tools/support/Interrupt.h"

#include <atomic>
#include <csignal>
#include <cstdlib>

#include "tools/support/ToolError.h"

namespace zel::tool {
namespace {

std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "used in a signal handler");

void OnSignal(int number) {
  if (interrupted.exchange(true)) std::_Exit(kExitInterrupted);
  // Windows forgets the handler at each delivery.
  std::signal(number, OnSignal);
}

}  // namespace

void WatchForInterrupt() {
  std::signal(SIGINT, OnSignal);
  std::signal(SIGTERM, OnSignal);
}

bool WasInterrupted() {
  return interrupted.load();
}

}  // namespace zel::tool
