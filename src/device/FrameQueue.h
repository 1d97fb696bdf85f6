#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "device/FrameDestination.h"
#include "imaging/COrvaneImage.h"
#include "platform/CZELCritSec.h"
#include "platform/Threads.h"

namespace zel {

/// The two finished frames that wait for `GetData`. One thread puts, any number takes; a frame never comes
/// out after a newer one. Without copies (`SetCopies`) nothing ever comes out.
class FrameQueue {
 public:
  explicit FrameQueue(CZELCritSec& lock) : lock_(lock) {}

  /// Before the first frame, each with the sizes of the frames to come.
  void SetCopies(std::unique_ptr<COrvaneImage> first, std::unique_ptr<COrvaneImage> second);

  /// Copies a finished frame into a free entry, or over the older waiting one. True when a frame was lost by
  /// that: the overwritten one, or this one if both entries are being read.
  bool Put(COrvaneImage& frame);

  /// Copies the oldest waiting frame (stride x height bytes) to the destination: S_OK; kResultTimeout when
  /// none came within the time or the queue was closed; E_FAIL, and the frame stays, when it does not fit.
  HRESULT Get(const FrameDestination& destination, std::uint32_t milliseconds);

  void Clear();  ///< drops the waiting frames
  void Close();  ///< ends all waits; nothing comes out any more

 private:
  struct Entry {
    std::unique_ptr<COrvaneImage> copy;
    bool filled = false;
    bool writing = false;
    bool taken = false;
    std::uint64_t order = 0;
  };

  Entry* Reserve(bool* lost);
  Entry* Oldest();  ///< of the filled entries that nobody reads; null if there is none

  CZELCritSec& lock_;  ///< guards everything below, but never a copy of pixels
  std::array<Entry, 2> entries_;
  std::uint64_t nextOrder_ = 0;
  bool closed_ = false;
  Event changed_;  ///< set when a frame was put or the queue closed
};

}  // namespace zel
