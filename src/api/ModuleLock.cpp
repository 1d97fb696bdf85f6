#include "api/ModuleLock.h"

#include <atomic>

namespace zel {
namespace {

std::atomic<LONG> lockCount{0};

}  // namespace

void LockModule() {
  ++lockCount;
}
void UnlockModule() {
  --lockCount;
}
LONG ModuleLockCount() {
  return lockCount;
}

}  // namespace zel
