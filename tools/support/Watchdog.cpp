#include "tools/support/Watchdog.h"

#include <fmt/format.h>

#include "platform/Threads.h"
#include "property/CZELDeviceProperty.h"
#include "tools/support/ToolError.h"

namespace zel::tool {
namespace {

// Asking opens the device once more, which is nothing to do at the pace of frames.
constexpr std::uint64_t kLookPeriodNs = 500'000'000;

}  // namespace

Watchdog::Watchdog(Camera& camera) : camera_(camera) {
  LONG milliseconds = 0;
  camera.Properties().GetTimeout(&milliseconds);
  limitNs_ = static_cast<std::uint64_t>(milliseconds > 0 ? milliseconds : 0) * 1'000'000;
  PropertyRecord trigger;
  triggered_ = camera.Properties().GetPropertyInfo(kExtTrigger, &trigger) == S_OK && trigger.current != 0;
  FrameCame();
  reads_ = 0;
}

void Watchdog::FrameCame() {
  ++reads_;
  lastFrameNs_ = NowNs();
  nextLookNs_ = lastFrameNs_ + kLookPeriodNs;
}

void Watchdog::NoFrame() {
  ++reads_;
  const std::uint64_t now = NowNs();
  const bool late = !triggered_ && now - lastFrameNs_ >= limitNs_;
  if (!late && now < nextLookNs_) return;
  nextLookNs_ = now + kLookPeriodNs;
  looks_.push_back(reads_);
  if (!camera_.IsConnected()) throw ToolError(kExitVanished, camera_.Label() + " vanished");
  if (late) {
    throw ToolError(kExitTimeout,
                    fmt::format("no frame from {} within {} ms", camera_.Label(), limitNs_ / 1'000'000));
  }
}

}  // namespace zel::tool
