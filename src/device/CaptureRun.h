#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "device/CZELDevice.h"
#include "device/CaptureStatistics.h"
#include "device/CommandChannel.h"
#include "device/FrameQueue.h"
#include "device/RawBuffers.h"
#include "imaging/COrvaneImageImpl.h"

namespace zel {

/// One capture, from `Play` to `Stop`: everything that its threads touch. Each thread that works for it holds
/// it alive, so that a read that is stuck in the driver ends on memory that still exists.
struct CaptureRun {
  CaptureRun(CZELCritSec& lock, LONG deliveryMode, bool withTrigger)
      : mode(deliveryMode), triggered(withTrigger), buffers(lock), commands(lock), queue(lock) {}

  bool HasWorkers() const { return mode != kDeliverOnDemand; }
  /// Whether a whole input frame of the image object lies behind the header in a raw buffer.
  bool FrameFits(std::size_t headerBytes) const;

  const LONG mode;       ///< latched: the application may change its wish meanwhile
  const bool triggered;  ///< latched, too: decides the thread layout
  std::unique_ptr<COrvaneImageImpl> image;
  RawBuffers buffers;
  CommandChannel commands;
  FrameQueue queue;
  const std::shared_ptr<CaptureCounters> counters = std::make_shared<CaptureCounters>();

  std::size_t inputBytes = SIZE_MAX;    ///< of one frame as the image object reads it; unknown at first
  std::atomic<bool> published = false;  ///< `Play` has set up everything
  std::atomic<bool> exiting = false;    ///< `Stop` has begun

  Event start;         ///< the workers begin
  Event captureExit;   ///< the free-running capture loop has ended; the triggered one never announces it
  Event captureEnded;  ///< either has
  Event processExit;

  /// Touched by the starting and the stopping thread only; taken out at the end, so that no worker joins
  /// itself.
  std::unique_ptr<Worker> captureWorker;
  std::unique_ptr<Worker> processWorker;
};

/// Tells the engine for which capture the current thread works, as long as the scope lasts.
class RunScope {
 public:
  RunScope(const CZELDevice& device, std::shared_ptr<CaptureRun> run);
  ~RunScope();
  RunScope(const RunScope&) = delete;
  RunScope& operator=(const RunScope&) = delete;

  /// Null when this thread works for none of the device's captures.
  static std::shared_ptr<CaptureRun> Of(const CZELDevice& device);

 private:
  const CZELDevice& device_;
  std::shared_ptr<CaptureRun> run_;
  RunScope* outer_;
};

}  // namespace zel
