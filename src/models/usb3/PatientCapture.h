#pragma once

#include <atomic>
#include <cstdint>

#include "platform/DriverHost.h"
#include "platform/Threads.h"
#include "property/CZELDevicePropertyImpl.h"

namespace zel {

/// Capture loop of disk-style cameras whose frames take most of a second: a read of the loop waits for its
/// frame instead of failing until there is one, so that the camera is asked at a quiet pace and the failures
/// that are counted are real ones. A read on demand is as quick as ever.
template <class Camera>
class PatientCapture : public Camera {
 public:
  LONG ReadFrame(unsigned char* buffer) override {
    LONG timeoutMs = 0;
    this->PropertyStore().GetTimeout(&timeoutMs);
    const std::uint64_t startNs = NowNs();
    const auto inTime = [&] {
      return timeoutMs < 0 ||
             NowNs() - startNs < std::uint64_t{1'000'000} * static_cast<std::uint64_t>(timeoutMs);
    };
    for (;;) {
      const LONG result = Camera::ReadFrame(buffer);
      if (result != 0 || !waits_ || !inTime()) return result;
      CurrentDriverHost().Sleep(kPollMs);
    }
  }

  DWORD CaptureThreadProc() override {
    waits_ = true;
    const DWORD result = Camera::CaptureThreadProc();
    waits_ = false;
    return result;
  }

  void AbortTransfer() override {
    waits_ = false;
    Camera::AbortTransfer();
  }

  LONG EndCapture() override {
    waits_ = false;
    return Camera::EndCapture();
  }

 protected:
  using Camera::Camera;

 private:
  static constexpr std::uint32_t kPollMs = 5;  // of the hundreds that a frame takes

  std::atomic<bool> waits_ = false;
};

}  // namespace zel
