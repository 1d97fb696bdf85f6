#include "device/CZELDeviceImpl.h"

#include <algorithm>

#include "device/CaptureRun.h"
#include "property/CZELDevicePropertyImpl.h"

namespace zel {

/// One of `OpenCamera`, `Play`, `Pause`, `Stop` under way. False when it must not begin.
class CZELDeviceImpl::Transition {
 public:
  Transition(CZELDeviceImpl& device, bool mayStop)
      : device_(device), begun_(device.BeginTransition(mayStop)) {}
  ~Transition() {
    if (begun_) device_.EndTransition();
  }
  Transition(const Transition&) = delete;
  Transition& operator=(const Transition&) = delete;
  explicit operator bool() const { return begun_; }

 private:
  CZELDeviceImpl& device_;
  const bool begun_;
};

CZELDeviceImpl::CZELDeviceImpl() : counters_(std::make_shared<CaptureCounters>()) {}

CZELDeviceImpl::~CZELDeviceImpl() {
  if (shutDown_) return;
  // Too late for anything virtual: at least no worker outlives the object.
  if (const auto run = Run()) {
    Dismiss(*run);
    run->commands.SendExit();
    run->processWorker.reset();
    run->captureWorker.reset();
  }
  retired_.clear();
  SetState(kStateStopped, 0);
}

void CZELDeviceImpl::Shutdown() {
  {
    const CritSecGuard guard(lock_);
    if (shutDown_) return;
  }
  {
    const Transition transition(*this, true);
    if (Run() != nullptr) StopCapture();
    const CritSecGuard guard(lock_);
    shutDown_ = true;
  }
  AwaitReaders();
  PropertyStore().AutoFocus().StopAutoFocus();
  SetState(kStateStopped, 0);
}

bool CZELDeviceImpl::BeginTransition(bool mayStop) {
  for (;;) {
    {
      const CritSecGuard guard(lock_);
      if (shutDown_) return false;
      if (!inTransition_) {
        inTransition_ = true;
        transitionMayStop_ = mayStop;
        transitionThread_ = std::this_thread::get_id();
        transitionOver_.Reset();
        return true;
      }
      if (transitionThread_ == std::this_thread::get_id()) return false;
      // The other thread may be waiting for this worker's frame to end.
      if (transitionMayStop_ && RunScope::Of(*this) != nullptr) return false;
    }
    transitionOver_.WaitPumping();
  }
}

void CZELDeviceImpl::EndTransition() {
  const CritSecGuard guard(lock_);
  inTransition_ = false;
  transitionOver_.Set();
}

void CZELDeviceImpl::SetState(LONG state, LONG param) {
  {
    const CritSecGuard guard(lock_);
    state_ = state;
  }
  // NOLINTNEXTLINE(performance-no-int-to-ptr): the event carries a number where others carry a picture
  observer_.Notify(kEventStateChanged, reinterpret_cast<void*>(static_cast<std::intptr_t>(param)), this);
}

LONG CZELDeviceImpl::GetStatus() {
  const CritSecGuard guard(lock_);
  return state_;
}

// ---- states

LONG CZELDeviceImpl::OpenCamera(LONG index) try {
  {
    const CritSecGuard guard(lock_);
    if (cameraIndex_ == index && state_ != kStateClosed) return 1;
  }
  // A worker can't wait for itself to let go of the old camera.
  if (RunScope::Of(*this) != nullptr) return 0;
  const Transition transition(*this, true);
  if (!transition) return 0;
  if (Run() != nullptr) StopCapture();
  AwaitReaders();
  {
    const CritSecGuard guard(lock_);
    cameraIndex_ = index;
  }
  PropertyStore().ConnectCapture(this);
  CloseDevice(index);
  trouble_.Clear();
  SetState(kStateOpened, 0);
  return OpenDevice();
} catch (...) {
  return 0;
}

LONG CZELDeviceImpl::Play() {
  const auto answerAtOnce = [](LONG state) { return state == kStateClosed || state == kStatePlaying; };
  if (const LONG state = GetStatus(); answerAtOnce(state)) return state == kStatePlaying;
  const Transition transition(*this, false);
  if (!transition) return 0;
  const LONG state = GetStatus();
  if (answerAtOnce(state)) return state == kStatePlaying;
  if (state != kStatePaused) return StartCapture();
  SendThreadCommand(static_cast<LONG>(ThreadCommand::Resume));
  SetState(kStatePlaying, 0);
  return 1;
}

LONG CZELDeviceImpl::Pause() {
  if (GetStatus() != kStatePlaying) return 0;
  const Transition transition(*this, false);
  if (!transition || GetStatus() != kStatePlaying) return 0;
  SendThreadCommand(static_cast<LONG>(ThreadCommand::Pause));
  SetState(kStatePaused, 0);
  return 1;
}

LONG CZELDeviceImpl::Stop() {
  const auto capturing = [this] {
    const LONG state = GetStatus();
    return state == kStatePlaying || state == kStatePaused;
  };
  if (!capturing()) return 0;
  const Transition transition(*this, true);
  if (!transition || !capturing()) return 0;
  StopCapture();
  return 1;
}

// ---- simple values

LONG CZELDeviceImpl::GetCameraIndex() {
  const CritSecGuard guard(lock_);
  return cameraIndex_;
}

LONG CZELDeviceImpl::GetCameraID() {
  return GetCameraIndex();
}

void CZELDeviceImpl::SetObserver(CZELObserver* observer) {
  observer_.Set(observer);
}

LONG CZELDeviceImpl::SetBufferSamples(LONG value) {
  const CritSecGuard guard(lock_);
  return bufferSamples_ = value;
}

LONG CZELDeviceImpl::GetBufferSamples() {
  const CritSecGuard guard(lock_);
  return bufferSamples_;
}

LONG CZELDeviceImpl::SetKeepRawData(LONG value) {
  const CritSecGuard guard(lock_);
  return keepRaw_ = value;
}

LONG CZELDeviceImpl::GetKeepRawData() {
  const CritSecGuard guard(lock_);
  return keepRaw_;
}

CaptureStatistics CZELDeviceImpl::Statistics() const {
  const CritSecGuard guard(lock_);
  return counters_->Read();
}

// ---- the image object and the buffers of a capture

std::shared_ptr<CaptureRun> CZELDeviceImpl::Run() const {
  const CritSecGuard guard(lock_);
  return run_;
}

std::shared_ptr<CaptureRun> CZELDeviceImpl::PublishedRun() const {
  const CritSecGuard guard(lock_);
  return run_ != nullptr && run_->published ? run_ : nullptr;
}

COrvaneImage* CZELDeviceImpl::GetImage() {
  const auto run = Run();
  return run != nullptr ? run->image.get() : nullptr;
}

std::shared_ptr<COrvaneImageImpl> CZELDeviceImpl::HoldImage() {
  const auto run = Run();
  return run != nullptr ? std::shared_ptr<COrvaneImageImpl>(run, run->image.get()) : nullptr;
}

LONG CZELDeviceImpl::GetBitmapInfo(BITMAPINFOHEADER* header) {
  const auto run = PublishedRun();
  if (run == nullptr) return 0;
  if (header != nullptr) *header = *run->image->GetBitmapInfoHeader();
  return 1;
}

void CZELDeviceImpl::ClearFrameQueue() {
  if (const auto run = Run()) run->queue.Clear();
}

bool CZELDeviceImpl::AllocateRawBuffers(std::int64_t bytes) {
  const auto run = Run();
  return run != nullptr && !run->published && run->buffers.Allocate(bytes);
}

unsigned char* CZELDeviceImpl::SpareRawBuffer() {
  const auto run = RunOfThisThread();
  return run != nullptr ? run->buffers.Buffer(2) : nullptr;
}

void CZELDeviceImpl::UseOneByteSamples() {
  eightBitTransfer_ = true;
  if (const auto image = HoldImage()) image->Set8BitTransfer(1);
}

void CZELDeviceImpl::ApplyFrameGeometry() {
  const auto run = Run();
  if (run == nullptr || run->published) return;
  COrvaneImageImpl& image = *run->image;
  image.SetWidth(geometry_.width);
  image.SetHeight(geometry_.height);
  image.SetSourceWidth(geometry_.sourceWidth);
  image.SetSourceHeight(geometry_.sourceHeight);
  const auto positive = [](LONG value) { return static_cast<std::size_t>(std::max<LONG>(value, 0)); };
  const std::size_t sampleBytes = image.GetInputFormat() == 6 || !IsEightBitTransfer() ? 2 : 1;
  run->inputBytes = positive(geometry_.sourceWidth) * positive(geometry_.sourceHeight) * sampleBytes;
}

// ---- what transports and models may leave as it is

LONG CZELDeviceImpl::ReadFrameAlt(unsigned char* buffer) {
  return ReadFrame(buffer);
}

bool CZELDeviceImpl::NoteReceived(std::size_t receivedBytes, std::size_t frameBytes) {
  if (receivedBytes != 0 && receivedBytes < frameBytes) incompleteFrame_ = true;
  return receivedBytes == frameBytes;
}

void CZELDeviceImpl::AbortTransfer() {}

void CZELDeviceImpl::OnFrameHook(unsigned char*) {}

}  // namespace zel
