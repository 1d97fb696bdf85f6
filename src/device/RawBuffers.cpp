#include "device/RawBuffers.h"

#include <limits>

namespace zel {

bool RawBuffers::Allocate(std::int64_t bytes) {
  for (auto& buffer : memory_) buffer.reset();
  bytes_ = 0;
  // Drivers count the bytes of a transfer in 32 bits.
  if (bytes <= 0 || bytes > std::numeric_limits<std::int32_t>::max()) return false;
  const auto size = static_cast<std::size_t>(bytes);
  for (auto& buffer : memory_) {
    // Zero pages of the system: `Play` need not write them all first.
    buffer.reset(static_cast<unsigned char*>(std::calloc(size, 1)));
    if (buffer != nullptr) continue;
    for (auto& other : memory_) other.reset();
    return false;
  }
  bytes_ = size;
  return true;
}

RawBuffers::Slot* RawBuffers::Find(State state) {
  Slot* found = nullptr;
  for (Slot& slot : slots_) {
    if (slot.state == state && (found == nullptr || slot.order < found->order)) found = &slot;
  }
  return found;
}

unsigned char* RawBuffers::BeginFill(bool* overwritten) {
  *overwritten = false;
  if (bytes_ == 0) return nullptr;
  const CritSecGuard guard(lock_);
  if (slots_[0].state == kShutDown) return nullptr;
  const std::size_t n = slots_[0].state == kFree                                     ? 0
                        : slots_[1].state == kFree || slots_[0].state == kProcessing ? 1
                                                                                     : 0;
  *overwritten = slots_[n].state == kFilled;
  slots_[n].state = kFilling;
  return memory_[n].get();
}

void RawBuffers::Leave(State from, State to) {
  if (Slot* slot = Find(from)) {
    slot->state = to;
    slot->order = nextOrder_++;
  }
  // Under the same lock, so that the event never tells of a buffer that is gone, nor misses one.
  if (Find(kFilled) != nullptr || slots_[0].state == kShutDown) {
    frameReady_.Set();
  } else {
    frameReady_.Reset();
  }
}

void RawBuffers::EndFill(bool filled) {
  const CritSecGuard guard(lock_);
  Leave(kFilling, filled ? kFilled : kFree);
}

unsigned char* RawBuffers::BeginProcess() {
  for (;;) {
    frameReady_.Wait();
    const CritSecGuard guard(lock_);
    if (slots_[0].state == kShutDown) return nullptr;
    if (Slot* slot = Find(kFilled)) {
      slot->state = kProcessing;
      return memory_[static_cast<std::size_t>(slot - slots_.data())].get();
    }
  }
}

void RawBuffers::EndProcess() {
  const CritSecGuard guard(lock_);
  Leave(kProcessing, kFree);
}

void RawBuffers::ShutDown() {
  const CritSecGuard guard(lock_);
  for (Slot& slot : slots_) slot.state = kShutDown;
  frameReady_.Set();
}

}  // namespace zel
