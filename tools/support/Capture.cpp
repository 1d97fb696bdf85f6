#include "tools/support/Capture.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

#include "api/ComObject.h"
#include "device/CZELDeviceImpl.h"
#include "imaging/COrvaneImageImpl.h"
#include "platform/Threads.h"
#include "property/CZELDeviceProperty.h"
#include "tools/support/ToolError.h"

namespace zel::tool {
namespace {

FrameShape ShapeOf(COrvaneImage& image) {
  FrameShape shape{image.GetWidth(), image.GetHeight(), image.GetStride(),
                   BitCountOf(image.GetOutputFormat()), image.GetRawSize()};
  shape.inputFormat = image.GetInputFormat();
  if (shape.inputFormat == 0 && image.GetRawStride() == 2 * shape.width) shape.sampleBits = 16;
  if (auto* const whole = dynamic_cast<COrvaneImageImpl*>(&image)) shape.bayerMode = whole->GetBayerMode();
  return shape;
}

/// Takes the frame that the image object holds now.
void CopyFrame(COrvaneImage& image, Keep keep, CapturedFrame* frame) {
  frame->arrivedNs = NowNs();
  static_cast<FrameShape&>(*frame) = ShapeOf(image);
  frame->pixels.clear();
  frame->raw.clear();
  if (keep == Keep::Pixels && image.GetBuffer() != nullptr) {
    frame->pixels.assign(image.GetBuffer(), image.GetBuffer() + frame->PixelBytes());
  }
  if (keep == Keep::Raw && image.GetRawBuffer() != nullptr) {
    frame->raw.assign(image.GetRawBuffer(), image.GetRawBuffer() + frame->rawBytes);
  }
}

class RunningCapture : public Capture {
 public:
  RunningCapture(Camera& camera, DeliveryMode mode, Keep keep) : camera_(camera), keep_(keep) {
    camera_.Api().SetBufferSamples(mode);
    camera_.Device().SetKeepRawData(keep == Keep::Raw);
  }

  std::int64_t Dropped() const override {
    const CaptureStatistics statistics = static_cast<CZELDeviceImpl&>(camera_.Device()).Statistics();
    return static_cast<std::int64_t>(statistics.framesOverwritten + statistics.framesIncomplete);
  }

 protected:
  COrvaneImage& Image() {
    COrvaneImage* const image = camera_.Device().GetImage();
    if (image == nullptr) throw ToolError(kExitFailed, camera_.Label() + " is not capturing");
    return *image;
  }

  Camera& camera_;
  const Keep keep_;
};

/// Each `Next` reads one frame.
class OnDemandCapture final : public RunningCapture {
 public:
  OnDemandCapture(Camera& camera, Keep keep) : RunningCapture(camera, kDeliverOnDemand, keep) {
    camera_.Play();
  }
  ~OnDemandCapture() override { camera_.Stop(); }

  bool Next(CapturedFrame* frame, std::uint32_t milliseconds) override {
    VARIANT unused{};
    unused.vt = VT_BYREF | VT_UI1;
    unused.byref = &unused;
    LONG result = 0;
    if (FAILED(camera_.Api().GetData(unused, &result))) {
      // A camera that refuses at once would otherwise be asked a million times a second.
      std::this_thread::sleep_for(std::chrono::milliseconds(std::min(milliseconds, 5u)));
      return false;
    }
    CopyFrame(Image(), keep_, frame);
    return true;
  }
};

/// Frames come out of the library's own queue of two.
class QueueCapture final : public RunningCapture {
 public:
  QueueCapture(Camera& camera, Keep keep) : RunningCapture(camera, kDeliverQueue, keep) {
    // Queued frames come without their raw copies; the raw output format is the same samples.
    if (keep == Keep::Raw) camera_.Properties().SetOutputFormat(0);
    camera_.Play();
    shape_ = ShapeOf(Image());
    if (keep == Keep::Raw && Image().GetInputFormat() != 0) {
      camera_.Stop();
      throw ToolError(kExitUsage, "raw frames of " + camera_.Label() + " do not pass the queue",
                      "use --mode callback or ondemand");
    }
  }
  ~QueueCapture() override { camera_.Stop(); }

  /// Waits for the camera's own time-out, as the library does.
  bool Next(CapturedFrame* frame, std::uint32_t) override {
    static_cast<FrameShape&>(*frame) = shape_;
    auto& memory = keep_ == Keep::Raw ? frame->raw : frame->pixels;
    memory.resize(shape_.PixelBytes());
    VARIANT destination{};
    destination.vt = VT_BYREF | VT_UI1;
    destination.byref = memory.data();
    LONG result = 0;
    camera_.Api().GetData(destination, &result);
    frame->arrivedNs = NowNs();
    return result == S_OK;
  }

 private:
  FrameShape shape_;
};

/// Frames of the callback wait here for the main thread, which may be busy writing files.
class FrameBuffer final : public ComObject<IZELGrabberCB> {
 public:
  // Half a second at 25 frames a second: rides out a slow moment of a disk.
  static constexpr std::size_t kMostWaiting = 12;

  HRESULT OnZELCameraEvent(LONG event, LONG*) override {
    return event == kEventFrameProcessed ? Guarded([this] { return Take(); }) : S_OK;
  }

  /// Before capture starts.
  void Attach(CZELDevice& device, Keep keep) {
    device_ = &device;
    keep_ = keep;
  }

  bool Next(CapturedFrame* frame, std::uint32_t milliseconds) {
    std::unique_lock lock(mutex_);
    if (!arrived_.wait_for(lock, std::chrono::milliseconds(milliseconds),
                           [this] { return !waiting_.empty(); })) {
      return false;
    }
    std::swap(*frame, waiting_.front());
    spare_.push_back(std::move(waiting_.front()));
    waiting_.pop_front();
    return true;
  }

  std::int64_t Dropped() const { return dropped_; }

 private:
  HRESULT Take() {
    CapturedFrame frame;
    {
      const std::lock_guard lock(mutex_);
      if (waiting_.size() >= kMostWaiting) {
        ++dropped_;
        return S_OK;
      }
      if (!spare_.empty()) {
        frame = std::move(spare_.back());
        spare_.pop_back();
      }
    }
    COrvaneImage* const image = device_->GetImage();
    if (image == nullptr) return S_OK;
    CopyFrame(*image, keep_, &frame);
    {
      const std::lock_guard lock(mutex_);
      waiting_.push_back(std::move(frame));
    }
    arrived_.notify_one();
    return S_OK;
  }

  CZELDevice* device_ = nullptr;
  Keep keep_ = Keep::Nothing;
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::deque<CapturedFrame> waiting_;
  std::vector<CapturedFrame> spare_;  ///< memory of frames that were taken
  std::atomic<std::int64_t> dropped_{0};
};

class CallbackCapture final : public RunningCapture {
 public:
  CallbackCapture(Camera& camera, Keep keep) : RunningCapture(camera, kDeliverCallback, keep) {
    buffer_->Attach(camera_.Device(), keep);
    camera_.Api().SetObserver(buffer_.Get());
    camera_.Play();
  }
  ~CallbackCapture() override {
    camera_.Stop();
    camera_.Api().SetObserver(nullptr);
  }

  bool Next(CapturedFrame* frame, std::uint32_t milliseconds) override {
    return buffer_->Next(frame, milliseconds);
  }
  std::int64_t Dropped() const override { return RunningCapture::Dropped() + buffer_->Dropped(); }

 private:
  const ComPtr<FrameBuffer> buffer_ = ComPtr<FrameBuffer>::Adopt(new FrameBuffer);
};

}  // namespace

std::optional<DeliveryMode> ParseDeliveryMode(std::string_view name) {
  if (name == "callback") return kDeliverCallback;
  if (name == "queue") return kDeliverQueue;
  if (name == "ondemand") return kDeliverOnDemand;
  return std::nullopt;
}

std::unique_ptr<Capture> StartCapture(Camera& camera, DeliveryMode mode, Keep keep) {
  switch (mode) {
    case kDeliverOnDemand:
      return std::make_unique<OnDemandCapture>(camera, keep);
    case kDeliverQueue:
      return std::make_unique<QueueCapture>(camera, keep);
    default:
      return std::make_unique<CallbackCapture>(camera, keep);
  }
}

std::optional<std::uint32_t> MeanLuminance(Camera& camera) {
  auto* const image = dynamic_cast<COrvaneImageImpl*>(camera.Device().GetImage());
  if (image == nullptr || BitCountOf(image->GetOutputFormat()) == 0) return std::nullopt;
  return image->GetMeanLuminance();
}

}  // namespace zel::tool
