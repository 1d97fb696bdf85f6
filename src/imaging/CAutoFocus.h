#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "imaging/FocusMeasure.h"
#include "platform/ComponentTypes.h"
#include "platform/Mutex.h"
#include "platform/Threads.h"

namespace zel {

/// How the autofocus reaches the lens: one position, in the camera's own steps.
class FocusDrive {
 public:
  virtual LONG ReadFocusPosition() = 0;
  virtual void WriteFocusPosition(LONG position) = 0;

 protected:
  ~FocusDrive() = default;
};

/// Measures the sharpness of a block of the live picture and moves the lens to where it is sharpest.
///
/// Frames arrive through `OnFrame`; a worker thread of its own asks for a block, evaluates it and drives the
/// lens. All operations may be called from any thread except from inside the `FocusDrive`. Frames must have
/// stopped before destruction; a search that still runs then is ended first. As the worker calls the drive,
/// an owner that is the drive itself calls `StopAutoFocus` before any of its parts go.
class CAutoFocus {
 public:
  explicit CAutoFocus(FocusDrive& drive);
  ~CAutoFocus();
  CAutoFocus(const CAutoFocus&) = delete;
  CAutoFocus& operator=(const CAutoFocus&) = delete;

  /// Size of the frames that follow: row pitch in pixels of four bytes, and rows. Without one (or with zeros,
  /// for frames that are not 32-bit) no frame is looked at.
  void Initialize(LONG pitchPixels, LONG imageHeight);

  void SetAutoFocusFilterType(LONG type);  ///< 0 Sobel, 1 Laplacian, 2 deviation from the mean
  void SetAutoFocusRange(LONG minimum, LONG maximum);
  void SetAutoFocusCurPos(LONG position);  ///< moves the lens
  LONG GetAutoFocusCurPos() const;
  /// The block to measure, in pixels. One that is not inside the picture is not measured: a search then waits
  /// for a better one.
  void SetOperatorBlock(LONG x, LONG y, LONG width, LONG height);
  LONG GetAutoFocusLevel() const;    ///< the last focus value, in percent of the block's threshold
  void SetAutoFocusMode(LONG mode);  ///< 0 single search that ends at the best position, else until stopped

  void StartAutoFocus();  ///< does nothing while a search runs
  /// Ends a search, moves the lens to the best position found and returns when all is done. Needs no frames.
  void StopAutoFocus();
  bool IsRunning() const { return running_; }

  /// Called with every converted 32-bit frame; copies the block out when the worker waits for one.
  void OnFrame(const unsigned char* image);

 private:
  struct Block {
    LONG x = 0;
    LONG y = 0;
    LONG width = 20;
    LONG height = 20;
  };

  bool HoldBlock(const Block& block);
  void Run();
  void Settle();
  bool FetchBlock();
  bool Evaluate();

  FocusDrive& drive_;

  mutable Mutex settings_;  ///< guards the fields up to `level_`; never held across a drive call or a wait
  LONG filterType_ = 0;
  FocusSearch search_;
  LONG lastWritten_ = 0;
  Block block_;
  LONG pitchPixels_ = 0;
  LONG imageHeight_ = 0;
  LONG level_ = 0;

  // One block in flight: the frame thread owns these between taking `request_` and releasing `blockReady_`,
  // the worker at all other times.
  Semaphore request_{0, 1};
  Semaphore blockReady_{0, 1};
  LONG blockWidth_ = 0;
  LONG blockHeight_ = 0;
  std::vector<std::uint32_t> grey_;
  std::vector<std::uint32_t> scratch_;

  Mutex lifecycle_;  ///< guards `worker_`
  std::atomic<bool> running_ = false;
  std::unique_ptr<Worker> worker_;
};

}  // namespace zel
