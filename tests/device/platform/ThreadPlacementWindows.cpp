#include <windows.h>

#include "device/ThreadPlacement.h"

namespace zel {

std::string ThreadPlacement() {
  DWORD_PTR ours = 0, all = 0;
  GetProcessAffinityMask(GetCurrentProcess(), &ours, &all);
  // The mask of a thread is told only by setting another.
  const DWORD_PTR mask = SetThreadAffinityMask(GetCurrentThread(), ours);
  SetThreadAffinityMask(GetCurrentThread(), mask);
  return "priority " + std::to_string(GetThreadPriority(GetCurrentThread())) + " mask " +
         std::to_string(mask);
}

}  // namespace zel
