#pragma once

#include <cstdint>
#include <functional>
#include <utility>

namespace zel {

/// Where a frame is copied to: memory of a known size, an address of which only the caller knows the size, or
/// memory that is made when the frame is there.
class FrameDestination {
 public:
  using Maker = std::function<void*(std::uint64_t bytes)>;

  // NOLINTNEXTLINE(google-explicit-constructor): an address is a destination
  FrameDestination(void* memory, std::uint64_t bytes = UINT64_MAX) : memory_(memory), bytes_(bytes) {}
  /// Called at most once, under the device's lock; null when there is no memory.
  explicit FrameDestination(Maker make) : make_(std::move(make)) {}

  /// Room for a frame of this many bytes; null when it does not fit.
  void* Room(std::uint64_t bytes) const {
    if (make_) return make_(bytes);
    return bytes <= bytes_ ? memory_ : nullptr;
  }

 private:
  void* memory_ = nullptr;
  std::uint64_t bytes_ = 0;
  Maker make_;
};

}  // namespace zel
