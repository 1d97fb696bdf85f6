#include "device/FrameQueue.h"

#include <cstring>

#include "common/ResultCodes.h"

namespace zel {
namespace {

std::size_t BytesOf(COrvaneImage& picture) {
  return static_cast<std::size_t>(picture.GetStride()) * static_cast<std::size_t>(picture.GetHeight());
}

}  // namespace

void FrameQueue::SetCopies(std::unique_ptr<COrvaneImage> first, std::unique_ptr<COrvaneImage> second) {
  const CritSecGuard guard(lock_);
  entries_[0].copy = std::move(first);
  entries_[1].copy = std::move(second);
}

FrameQueue::Entry* FrameQueue::Oldest() {
  Entry* oldest = nullptr;
  for (Entry& entry : entries_) {
    if (entry.filled && !entry.taken && (oldest == nullptr || entry.order < oldest->order)) oldest = &entry;
  }
  return oldest;
}

FrameQueue::Entry* FrameQueue::Reserve(bool* lost) {
  Entry* reserved = nullptr;
  for (Entry& entry : entries_) {
    if (reserved == nullptr && !entry.filled && !entry.taken) reserved = &entry;
  }
  *lost = reserved == nullptr;
  if (reserved == nullptr) reserved = Oldest();
  if (reserved == nullptr) return nullptr;
  reserved->filled = false;
  reserved->writing = true;
  return reserved;
}

bool FrameQueue::Put(COrvaneImage& frame) {
  bool lost = false;
  Entry* entry = nullptr;
  {
    const CritSecGuard guard(lock_);
    if (closed_ || entries_[0].copy == nullptr) return false;
    entry = Reserve(&lost);
  }
  if (entry == nullptr) return true;
  frame.CopyTo(entry->copy.get());
  const CritSecGuard guard(lock_);
  // `Clear` meanwhile means that this frame is stale, too.
  if (!entry->writing) return lost;
  entry->writing = false;
  if (entry->copy->GetBuffer() == nullptr) return true;  // no memory for it
  entry->filled = true;
  entry->order = nextOrder_++;
  changed_.Set();
  return lost;
}

HRESULT FrameQueue::Get(const FrameDestination& destination, std::uint32_t milliseconds) {
  const std::uint64_t startNs = NowNs();
  for (;;) {
    Entry* entry = nullptr;
    std::size_t bytes = 0;
    void* room = nullptr;
    {
      const CritSecGuard guard(lock_);
      if (closed_) return kResultTimeout;
      entry = Oldest();
      if (entry != nullptr) {
        // Of the very picture that is copied.
        bytes = BytesOf(*entry->copy);
        room = destination.Room(bytes);
        if (room == nullptr) return E_FAIL;
        entry->taken = true;
      } else {
        changed_.Reset();
      }
    }
    if (entry != nullptr) {
      std::memcpy(room, entry->copy->GetBuffer(), bytes);
      const CritSecGuard guard(lock_);
      entry->taken = false;
      entry->filled = false;
      return S_OK;
    }
    // Another reader may have been faster, or the frame was dropped: wait on for what is left of the time.
    std::uint32_t remaining = milliseconds;
    if (milliseconds != kForever) {
      const std::uint64_t elapsed = (NowNs() - startNs) / 1'000'000;
      remaining = elapsed < milliseconds ? static_cast<std::uint32_t>(milliseconds - elapsed) : 0;
    }
    if (remaining == 0 || !changed_.Wait(remaining)) return kResultTimeout;
  }
}

void FrameQueue::Clear() {
  const CritSecGuard guard(lock_);
  for (Entry& entry : entries_) {
    entry.writing = false;
    if (!entry.taken) entry.filled = false;
  }
}

void FrameQueue::Close() {
  const CritSecGuard guard(lock_);
  closed_ = true;
  changed_.Set();
}

}  // namespace zel
