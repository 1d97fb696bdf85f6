#pragma once

#include <atomic>
#include <condition_variable>
#include <cstring>
#include <functional>
#include <mutex>
#include <vector>

#include "device/CZELDeviceImpl.h"
#include "imaging/COrvaneImageImpl.h"
#include "platform/Threads.h"
#include "property/CZELDevicePropertyImpl.h"

namespace zel {

constexpr std::size_t kFrameBytes = 32 * 8;

/// The number that a frame carries in every word; 0 for a torn one.
inline std::uint32_t FrameNumber(const void* pixels) {
  std::array<std::uint32_t, kFrameBytes / 4> words;
  std::memcpy(words.data(), pixels, kFrameBytes);
  for (const std::uint32_t word : words) {
    if (word != words[0]) return 0;
  }
  return words[0];
}

class FakeStore : public CZELDevicePropertyImpl {
 public:
  FakeStore() {
    settings_.outputFormat = 0;  // raw samples, so that frame numbers survive
    settings_.timeoutMs = 20000;
    Edit(kExtTrigger).supported = 1;
  }
  using CZELDevicePropertyImpl::Edit;
  using CZELDevicePropertyImpl::settings_;
  LONG OnCaptureStopped() override {
    onStopped();
    return 0;
  }
  std::function<void()> onStopped = [] {};
};

/// A camera of numbered frames (1, 2, ...) without hardware. `onRead` decides what a read does.
class FakeCamera : public CZELDeviceImpl {
 public:
  FakeCamera() {
    geometry_ = {
        .transferPixels = kFrameBytes, .width = 32, .height = 8, .sourceWidth = 32, .sourceHeight = 8};
  }
  ~FakeCamera() override { Shutdown(); }

  LONG IsSataCamera() override { return 0; }
  LONG GetMaxCameraNum() override { return 4; }
  LONG IsCameraValid(LONG, LONG*) override { return 1; }
  LONG IsCameraConnected(LONG*) override { return 1; }
  LONG GetCameraType() override { return 13; }
  const OLECHAR* GetDriverName() override { return nullptr; }
  CZELDeviceProperty* GetProperty() override { return &store; }
  CZELDevicePropertyImpl& PropertyStore() override { return store; }

  LONG OpenDevice() override {
    ++opens;
    store.AttachDevice(this);
    return openResult;
  }
  LONG CloseDevice(LONG) override { return ++closes; }
  LONG PrepareCapture() override {
    first_ = nullptr;
    store.ApplyColorMatrix();
    ApplyFrameGeometry();
    return AllocateRawBuffers(rawBytes);
  }
  LONG EndCapture() override {
    onEnd();
    return ++ends;
  }
  void AbortTransfer() override {
    ++aborts;
    aborted.Set();
    if (onAbort) onAbort();
  }
  LONG ReadFrame(unsigned char* buffer) override {
    const int now = ++readers;
    if (now > mostReaders) mostReaders = now;
    const LONG result = onRead(buffer);
    --readers;
    return result;
  }
  LONG ReadFrameAlt(unsigned char* buffer) override {
    ++triggeredReads;
    return ReadFrame(buffer);
  }
  void ProcessFrame(unsigned char* raw) override { DeliverFrame(raw, 0, kEventFrameProcessed); }

  LONG NextFrame(unsigned char* buffer) {
    const std::uint32_t number = ++frames;
    for (std::size_t i = 0; i < kFrameBytes; i += 4) std::memcpy(buffer + i, &number, 4);
    return 1;
  }

  /// A frame for each of `permits`; without one the read fails after a moment. Fills the first buffer only,
  /// so that no frame is lost to a newer one.
  LONG PermittedFrame(unsigned char* buffer) {
    if (first_ == nullptr) first_ = buffer;
    return buffer == first_ && permits.Acquire(2) ? NextFrame(buffer) : 0;
  }
  Semaphore permits{0, 1000};

  using CZELDeviceImpl::geometry_;
  FakeStore store;
  std::function<LONG(unsigned char*)> onRead = [this](unsigned char* buffer) { return NextFrame(buffer); };
  std::function<void()> onAbort, onEnd = [] {};
  std::int64_t rawBytes = kFrameBytes;
  LONG openResult = 1;
  int opens = 0, closes = 0, ends = 0, aborts = 0;
  Event aborted;
  std::atomic<int> readers = 0, mostReaders = 0, triggeredReads = 0;
  std::atomic<std::uint32_t> frames = 0;

 private:
  const unsigned char* first_ = nullptr;
};

/// Notes states and frame numbers, and runs `onFrame` inside the notification.
class Listener : public CZELObserver {
 public:
  void Notify(LONG event, void* param, CZELDevice* device) override {
    if (event == kEventStateChanged) {
      states.push_back(device->GetStatus());
      return;
    }
    if (event != kEventFrameProcessed) return;
    const std::uint32_t number = FrameNumber(param);
    if (number <= last) inOrder = false;
    last = number;
    if (onFrame) onFrame(number);
    const std::lock_guard lock(mutex_);
    ++count_;
    more_.notify_all();
  }

  void AwaitFrames(int n) {
    std::unique_lock lock(mutex_);
    const int target = count_ + n;
    more_.wait(lock, [&] { return count_ >= target; });
  }

  std::vector<LONG> states;
  std::atomic<std::uint32_t> last = 0;
  std::atomic<bool> inOrder = true;
  std::function<void(std::uint32_t)> onFrame;

 private:
  std::mutex mutex_;
  std::condition_variable more_;
  int count_ = 0;
};

}  // namespace zel
