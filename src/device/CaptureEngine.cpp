// The part of the device that runs while it captures.

#include <optional>
#include <utility>

#include "common/ResultCodes.h"
#include "device/CZELDeviceImpl.h"
#include "device/CaptureRun.h"
#include "device/PlaySettings.h"
#include "imaging/COrvaneImageImpl32.h"
#include "platform/DriverHost.h"
#include "property/CZELDevicePropertyImpl.h"

namespace zel {
namespace {

/// How long an application thread waits for a worker that is in the driver, in milliseconds.
constexpr std::uint32_t kDriverPatienceMs = 2000;

/// From one read to the next when it brought no frame, in milliseconds.
constexpr std::uint32_t kBetweenReadsMs = 1;

/// A read that fails faster than this, in nanoseconds, found no camera rather than no frame.
constexpr std::uint64_t kInstantFailureNs = 1'000'000;

/// Runs a step of a transport or model, which must not end a worker or a half-done `Stop` by throwing.
template <class Step>
bool Quietly(Step step) {
  try {
    step();
    return true;
  } catch (...) {
    return false;
  }
}

}  // namespace

// ---- starting

std::shared_ptr<CaptureRun> CZELDeviceImpl::MakeRun() {
  CZELDevicePropertyImpl& store = PropertyStore();
  LONG transferMode = 0;
  store.GetTransMode(&transferMode);
  eightBitTransfer_ = transferMode == 0;
  auto run = std::make_shared<CaptureRun>(lock_, GetBufferSamples(), store.Record(kExtTrigger).current != 0);
  run->image = MakePlayImage(store, eightBitTransfer_, GetKeepRawData() != 0, lock_);
  return run;
}

bool CZELDeviceImpl::StartCapture() {
  std::shared_ptr<CaptureRun> run;
  try {
    JoinEndedWorkers();
    run = MakeRun();
    const CritSecGuard guard(lock_);
    retired_.reserve(retired_.size() + 2);  // `Stop` must not need memory
    run_ = run;
    counters_ = run->counters;
  } catch (...) {
    return false;
  }
  const LONG format = run->image->GetOutputFormat();
  trouble_.Clear();
  const bool started = Quietly([&] {
    // A camera that can't be prepared plays without frames; the application sees time-outs.
    PrepareCapture();
    {
      // The image object was chosen by its format: one set since then waits for the next capture.
      const CritSecGuard guard(lock_);
      run->image->SetOutputFormat(format);
      run->image->AllocateBuffers();
    }
    FitAutoFocus(PropertyStore().AutoFocus(), *run->image);
    if (run->mode == kDeliverQueue) run->queue.SetCopies(CopyOf(*run->image), CopyOf(*run->image));
    if (run->HasWorkers()) StartWorkers(run);
  });
  if (!started) {
    Dismiss(*run);
    run->commands.SendExit();
    run->start.Set();
    run->processWorker.reset();
    run->captureWorker.reset();
    Quietly([this] { EndCapture(); });
    const CritSecGuard guard(lock_);
    run_ = nullptr;
    return false;
  }
  run->published = true;
  SetState(kStatePlaying, 0);
  run->start.Set();
  return true;
}

std::unique_ptr<COrvaneImage> CZELDeviceImpl::CopyOf(COrvaneImage& image) {
  // A 32-bit object also for 24-bit pictures: it only carries them.
  auto copy = std::make_unique<COrvaneImageImpl32>(0);
  copy->SetLock(&lock_);
  image.CopyTo(copy.get());
  return copy;
}

void CZELDeviceImpl::StartWorkers(const std::shared_ptr<CaptureRun>& run) {
  const auto begin = [&](DWORD (CZELDeviceImpl::*loop)()) {
    return std::make_unique<Worker>([this, loop, run] {
      const RunScope scope(*this, run);
      run->start.Wait();
      (this->*loop)();
    });
  };
  run->commands.Open();
  run->captureWorker = begin(&CZELDeviceImpl::CaptureThreadProc);
  run->processWorker = begin(&CZELDeviceImpl::ProcessThreadProc);
  // A free-running camera must be served without gaps; with a trigger frames are rare, and processing one
  // comes first.
  Worker& timeCritical = run->triggered ? *run->processWorker : *run->captureWorker;
  Worker& high = run->triggered ? *run->captureWorker : *run->processWorker;
  high.SetPriority(WorkerPriority::Highest);
  timeCritical.SetPriority(WorkerPriority::TimeCritical);
  if (ProcessorCount() >= 2) {
    timeCritical.SetAffinity(1);
    high.SetAffinity(2);
  }
}

// ---- commands and stopping

void CZELDeviceImpl::SendThreadCommand(LONG command) {
  if (const auto run = Run()) run->commands.Send(static_cast<ThreadCommand>(command), kDriverPatienceMs);
}

void CZELDeviceImpl::SendExitCommand() {
  const auto run = Run();
  if (run == nullptr || !run->HasWorkers()) return;
  run->commands.SendExit();
  // On the processing worker (an observer stops the camera) the loop ends when the observer returns.
  if (RunScope::Of(*this) != run) run->processExit.WaitPumping();
}

void CZELDeviceImpl::Dismiss(CaptureRun& run) {
  run.exiting = true;
  run.buffers.ShutDown();
  run.queue.Close();
  readTurn_.Wake();
}

void CZELDeviceImpl::StopCapture() {
  const auto run = Run();
  Dismiss(*run);
  const bool onWorker = RunScope::Of(*this) == run;
  const std::uint64_t startNs = NowNs();
  if (run->HasWorkers()) {
    Quietly([this] { AbortTransfer(); });
    SendExitCommand();
    // A device handle serves one thread: the reading one should be out of the driver before streaming ends.
    run->captureEnded.WaitPumping(kDriverPatienceMs);
  }
  SetState(kStateStopped, 0);
  Quietly([this] { PropertyStore().OnCaptureStopped(); });
  Quietly([this] { EndCapture(); });
  if (run->HasWorkers()) {
    const std::uint64_t waitedMs = (NowNs() - startNs) / 1'000'000;
    if (waitedMs < kDriverPatienceMs) {
      run->captureExit.WaitPumping(kDriverPatienceMs - static_cast<std::uint32_t>(waitedMs));
    }
  }
  std::unique_ptr<Worker> capture = std::move(run->captureWorker);
  std::unique_ptr<Worker> process = std::move(run->processWorker);
  if (run->captureEnded.Wait(0)) capture.reset();
  if (!onWorker) process.reset();
  const CritSecGuard guard(lock_);
  run_ = nullptr;
  if (capture != nullptr) retired_.push_back(std::move(capture));
  if (process != nullptr) retired_.push_back(std::move(process));
}

void CZELDeviceImpl::JoinEndedWorkers() {
  const CritSecGuard guard(lock_);
  std::erase_if(retired_, [](const auto& worker) { return !worker->IsCurrentThread() && worker->Wait(0); });
}

void CZELDeviceImpl::AwaitReaders() {
  std::vector<std::unique_ptr<Worker>> workers;
  {
    const CritSecGuard guard(lock_);
    workers.swap(retired_);
  }
  for (const auto& worker : workers) worker->WaitPumping();
  const std::atomic<bool> never = false;
  if (readTurn_.Take(never)) readTurn_.Return();
}

// ---- the two loops

LONG CZELDeviceImpl::Read(CaptureRun& run, unsigned char* buffer) {
  if (buffer == nullptr) return 0;
  LONG result = 0;
  Quietly([&] { result = run.triggered && run.HasWorkers() ? ReadFrameAlt(buffer) : ReadFrame(buffer); });
  if (incompleteFrame_.exchange(false) && !run.exiting) ++run.counters->framesIncomplete;
  if (result == kReadWithoutFrame) return result;
  if (result != 0) {
    ++run.counters->framesRead;
  } else if (!run.exiting) {
    ++run.counters->readFailures;
  }
  return result;
}

DWORD CZELDeviceImpl::CaptureThreadProc() {
  const auto run = RunOfThisThread();
  if (run == nullptr) return 0;
  if (readTurn_.Take(run->exiting)) {
    while (run->commands.AwaitRun()) {
      bool overwritten = false;
      unsigned char* buffer = run->buffers.BeginFill(&overwritten);
      if (overwritten) ++run->counters->framesOverwritten;
      const std::uint64_t startNs = NowNs();
      const LONG result = Read(*run, buffer);
      const bool filled = result != 0 && result != kReadWithoutFrame;
      run->buffers.EndFill(filled);
      // The next try follows at once, but a camera that is gone must not cost a whole processor.
      if (!filled && NowNs() - startNs < kInstantFailureNs) CurrentDriverHost().Sleep(kBetweenReadsMs);
    }
    readTurn_.Return();
  }
  run->commands.Close();
  run->buffers.ShutDown();
  run->queue.Close();
  if (!run->triggered) run->captureExit.Set();
  run->captureEnded.Set();
  return 0;
}

DWORD CZELDeviceImpl::ProcessThreadProc() {
  const auto run = RunOfThisThread();
  if (run == nullptr) return 0;
  while (unsigned char* raw = run->buffers.BeginProcess()) {
    Quietly([&] { ProcessFrame(raw); });
    run->buffers.EndProcess();
  }
  run->processExit.Set();
  return 0;
}

// ---- frames

std::shared_ptr<CaptureRun> CZELDeviceImpl::RunOfThisThread() const {
  auto run = RunScope::Of(*this);
  return run != nullptr ? run : Run();
}

unsigned char* CZELDeviceImpl::Convert(CaptureRun& run, unsigned char* raw, std::size_t headerBytes) {
  if (raw == nullptr || !run.FrameFits(headerBytes)) return nullptr;
  run.image->ProcessFrame(raw + headerBytes);
  ++run.counters->framesProcessed;
  unsigned char* picture = run.image->GetBuffer();
  if (picture != nullptr) PropertyStore().AutoFocus().OnFrame(picture);
  return picture;
}

void CZELDeviceImpl::ProcessFrame(unsigned char* raw) {
  const auto run = RunOfThisThread();
  if (run == nullptr || Convert(*run, raw, 0) == nullptr) return;
  const bool notified = observer_.Notify(kEventFrameProcessed, run->image.get(), this);
  if (notified && run->HasWorkers()) ++run->counters->framesDelivered;
}

void CZELDeviceImpl::DeliverFrame(unsigned char* raw, std::size_t headerBytes, LONG frameEvent) {
  const auto run = RunOfThisThread();
  if (run == nullptr) return;
  OnFrameHook(raw);
  unsigned char* picture = Convert(*run, raw, headerBytes);
  if (picture == nullptr) return;
  if (run->mode == kDeliverCallback && frameEvent != 0) {
    if (observer_.Notify(frameEvent, picture, this)) ++run->counters->framesDelivered;
  } else if (run->mode == kDeliverQueue) {
    if (run->queue.Put(*run->image)) ++run->counters->framesOverwritten;
  }
}

HRESULT CZELDeviceImpl::GetData(const FrameDestination& destination, LONG) {
  const auto run = PublishedRun();
  const LONG mode = run != nullptr ? run->mode : GetBufferSamples();
  return mode == kDeliverOnDemand ? GetDataDirect(destination) : GetDataQueued(destination);
}

std::uint32_t CZELDeviceImpl::FrameTimeoutMs() {
  LONG milliseconds = 3000;
  PropertyStore().GetTimeout(&milliseconds);
  return static_cast<std::uint32_t>(milliseconds);  // -1 waits as long as the capture lasts
}

HRESULT CZELDeviceImpl::GetDataQueued(const FrameDestination& destination) {
  const auto run = PublishedRun();
  if (run == nullptr) return kResultTimeout;
  const HRESULT result = run->queue.Get(destination, FrameTimeoutMs());
  if (result == S_OK) ++run->counters->framesDelivered;
  return result;
}

bool CZELDeviceImpl::ReadInTime(CaptureRun& run, unsigned char* buffer, std::uint32_t milliseconds) {
  std::optional<std::uint64_t> start;
  for (;;) {
    const LONG result = Read(run, buffer);
    if (run.exiting) return false;
    if (result != kReadWithoutFrame) return result != 0;
    // The clock is asked only when there is something to wait for.
    DriverHost& host = CurrentDriverHost();
    const std::uint64_t now = host.Milliseconds();
    if (!start) start = now;
    if (milliseconds != kForever && now - *start >= milliseconds) return false;
    host.Sleep(kBetweenReadsMs);
  }
}

HRESULT CZELDeviceImpl::GetDataDirect(const FrameDestination&) {
  const auto run = PublishedRun();
  if (run == nullptr) return E_FAIL;
  unsigned char* raw = run->buffers.Buffer(0);
  const std::uint32_t limit = FrameTimeoutMs();
  if (raw == nullptr || !readTurn_.Take(run->exiting, limit)) return E_FAIL;
  bool done = ReadInTime(*run, raw, limit);
  if (done) {
    const RunScope scope(*this, run);
    done = Quietly([&] { ProcessFrame(raw); });
  }
  readTurn_.Return();
  if (!done) return E_FAIL;
  ++run->counters->framesDelivered;
  return S_OK;
}

}  // namespace zel
