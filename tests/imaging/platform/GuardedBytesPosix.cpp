#include <sys/mman.h>

#include <new>

#include "imaging/GuardedBytes.h"

namespace zel {

std::uint8_t* GuardedBytes::Map(std::size_t bytes) {
  void* pages = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (pages == MAP_FAILED) throw std::bad_alloc();
  auto* first = static_cast<std::uint8_t*>(pages);
  mprotect(first, kPage, PROT_NONE);
  mprotect(first + bytes - kPage, kPage, PROT_NONE);
  return first;
}

void GuardedBytes::Unmap(std::uint8_t* pages, std::size_t bytes) {
  munmap(pages, bytes);
}

}  // namespace zel
