#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "platform/CZELCritSec.h"
#include "platform/Threads.h"

namespace zel {

/// The raw frames between the capture worker, which fills, and the processing worker, which empties. A newer
/// frame overwrites an unprocessed one instead of waiting; one that is being processed is never touched; the
/// older of two filled ones is processed first.
class RawBuffers {
 public:
  explicit RawBuffers(CZELCritSec& lock) : lock_(lock) {}

  /// Replaces the buffers by three zeroed ones; none when memory is short or the size is not positive. Only
  /// while no worker runs.
  bool Allocate(std::int64_t bytes);
  std::size_t Bytes() const { return bytes_; }  ///< of one buffer; 0 without
  /// By number, 0..2; null without memory. The third is for reads whose frame is thrown away.
  unsigned char* Buffer(std::size_t n) const { return memory_[n].get(); }

  /// The buffer for the next frame, null without memory or after `ShutDown`; `overwritten` tells whether a
  /// frame is lost by filling it.
  unsigned char* BeginFill(bool* overwritten);
  void EndFill(bool filled);

  /// Waits for a filled buffer; null after `ShutDown`.
  unsigned char* BeginProcess();
  void EndProcess();

  /// Ends filling and processing for good and wakes the processing worker.
  void ShutDown();

 private:
  enum State : std::int32_t { kShutDown = -1, kFree = 0, kFilling = 1, kFilled = 2, kProcessing = 3 };
  struct Slot {
    State state = kFree;
    std::uint64_t order = 0;
  };

  Slot* Find(State state);
  void Leave(State from, State to);

  struct Free {
    void operator()(unsigned char* memory) const { std::free(memory); }
  };

  std::array<std::unique_ptr<unsigned char[], Free>, 3> memory_;
  std::size_t bytes_ = 0;
  CZELCritSec& lock_;  ///< guards the following
  std::array<Slot, 2> slots_;
  std::uint64_t nextOrder_ = 0;
  Event frameReady_;  ///< set while a buffer is filled, and after `ShutDown`
};

}  // namespace zel
