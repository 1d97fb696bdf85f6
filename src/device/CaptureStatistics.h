#pragma once

#include <atomic>
#include <cstdint>

namespace zel {

/// What one capture did, from `Play` on. Frames that were read but neither delivered nor overwritten were not
/// wanted by anybody (no observer, nobody calling `GetData`) or were under way when the capture stopped.
struct CaptureStatistics {
  std::uint64_t framesRead = 0;
  std::uint64_t readFailures = 0;      ///< also of cameras that say that they have no frame yet
  std::uint64_t framesIncomplete = 0;  ///< came in part and were thrown away
  std::uint64_t framesProcessed = 0;
  std::uint64_t framesOverwritten = 0;  ///< lost to newer ones, before processing or in the queue
  std::uint64_t framesDelivered = 0;    ///< to an observer or by `GetData`
};

/// The same while the capture's threads count.
struct CaptureCounters {
  std::atomic<std::uint64_t> framesRead = 0;
  std::atomic<std::uint64_t> readFailures = 0;
  std::atomic<std::uint64_t> framesIncomplete = 0;
  std::atomic<std::uint64_t> framesProcessed = 0;
  std::atomic<std::uint64_t> framesOverwritten = 0;
  std::atomic<std::uint64_t> framesDelivered = 0;

  CaptureStatistics Read() const {
    return {framesRead, readFailures, framesIncomplete, framesProcessed, framesOverwritten, framesDelivered};
  }
};

}  // namespace zel
