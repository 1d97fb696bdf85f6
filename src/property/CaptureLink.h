#pragma once

#include <memory>

namespace zel {

class COrvaneImageImpl;

/// What a store needs of the capture engine of its device.
class CaptureLink {
 public:
  /// The image object of the running capture, alive as long as the pointer; null unless capturing.
  virtual std::shared_ptr<COrvaneImageImpl> HoldImage() = 0;
  /// Drops the frames that wait in the queue.
  virtual void ClearFrameQueue() = 0;

 protected:
  ~CaptureLink() = default;
};

}  // namespace zel
