#pragma once

#include "platform/ComponentTypes.h"

namespace zel {

/// What keeps the library loaded: every living object holds one lock, a client may hold more through a class
/// object. Any thread.
void LockModule();
void UnlockModule();
LONG ModuleLockCount();

/// One lock for the life of an object.
class ModuleLock {
 public:
  ModuleLock() { LockModule(); }
  ~ModuleLock() { UnlockModule(); }
  ModuleLock(const ModuleLock&) = delete;
  ModuleLock& operator=(const ModuleLock&) = delete;
};

}  // namespace zel
