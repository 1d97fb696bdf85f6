#pragma once

#include <cstdint>
#include <vector>

#include "tools/support/Camera.h"

namespace zel::tool {

/// Tells a slow camera from one that stopped and one that is gone. A camera that waits for its trigger is
/// never too slow.
class Watchdog {
 public:
  /// For an open camera whose settings are made; its own time-out is the limit.
  explicit Watchdog(Camera& camera);

  void FrameCame();
  /// To be called often while no frame comes. Throws: time-out, or camera vanished.
  void NoFrame();

  /// Calls of the two together.
  std::int64_t Reads() const { return reads_; }
  /// The calls, from 1, at which the camera was probed.
  const std::vector<std::int64_t>& Looks() const { return looks_; }

 private:
  Camera& camera_;
  bool triggered_ = false;
  std::uint64_t limitNs_ = 0;
  std::uint64_t lastFrameNs_ = 0;
  std::uint64_t nextLookNs_ = 0;
  std::int64_t reads_ = 0;
  std::vector<std::int64_t> looks_;
};

}  // namespace zel::tool
