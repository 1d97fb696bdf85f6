#include <windows.h>

#include <new>

#include "imaging/GuardedBytes.h"

namespace zel {

std::uint8_t* GuardedBytes::Map(std::size_t bytes) {
  auto* first =
      static_cast<std::uint8_t*>(VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
  if (!first) throw std::bad_alloc();
  DWORD before = 0;
  VirtualProtect(first, kPage, PAGE_NOACCESS, &before);
  VirtualProtect(first + bytes - kPage, kPage, PAGE_NOACCESS, &before);
  return first;
}

void GuardedBytes::Unmap(std::uint8_t* pages, std::size_t) {
  VirtualFree(pages, 0, MEM_RELEASE);
}

}  // namespace zel
