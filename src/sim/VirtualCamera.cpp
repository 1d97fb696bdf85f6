#include "sim/VirtualCamera.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace zel {
namespace {

// A reader that is no later than this keeps the sensor's pace: a timer tick of the system is not its fault.
constexpr std::chrono::milliseconds kPatience{20};
constexpr int kFocusDepth = 8;                    // positions around the sharpest one that are as sharp
constexpr double kBlurPerStep = 0.1;              // pixels for every position beyond
constexpr std::size_t kMaxProtocolErrors = 1000;  // a host in a loop must not fill the memory

std::chrono::steady_clock::duration Seconds(double seconds) {
  return std::chrono::duration_cast<std::chrono::steady_clock::duration>(
      std::chrono::duration<double>(seconds));
}

}  // namespace

VirtualCamera::VirtualCamera(const SensorMap& map, std::shared_ptr<const Scene> scene,
                             const SimConfiguration& configuration)
    : map_(&map),
      framesPerSecond_(configuration.framesPerSecond),
      triggerRate_(configuration.triggerRate),
      seed_(configuration.seed),
      sensor_(map),
      focus_(configuration.focus),
      faults_(configuration.faults),
      renderer_(map, std::move(scene), configuration.noise) {}

void VirtualCamera::WriteRegister(std::uint32_t address, std::uint32_t value) {
  const std::lock_guard lock(mutex_);
  sensor_.Write(address, value);
  ++settings_;
  changed_.notify_all();
}

std::uint32_t VirtualCamera::ReadRegister(std::uint32_t address) const {
  const std::lock_guard lock(mutex_);
  return sensor_.Read(address);
}

void VirtualCamera::ResetSensor() {
  const std::lock_guard lock(mutex_);
  sensor_.Reset();
  halfClock_ = false;
  ++settings_;
  changed_.notify_all();
}

void VirtualCamera::ResetExposure() {
  const std::lock_guard lock(mutex_);
  sensor_.ResetExposure();
  ++settings_;
  changed_.notify_all();
}

void VirtualCamera::SetHalfClock(bool on) {
  const std::lock_guard lock(mutex_);
  halfClock_ = on;
  ++settings_;
  changed_.notify_all();
}

bool VirtualCamera::HalfClock() const {
  const std::lock_guard lock(mutex_);
  return halfClock_;
}

void VirtualCamera::MoveLens(int position) {
  const std::lock_guard lock(mutex_);
  lens_ = position;
}

void VirtualCamera::MoveScene(int position) {
  const std::lock_guard lock(mutex_);
  focus_ = {{position, 0}};
}

double VirtualCamera::Blur() const {
  if (!lens_) return 0;
  SimFocus now;
  for (const SimFocus& focus : focus_) {
    if (focus.frame <= frames_) now = focus;
  }
  return kBlurPerStep * std::max(std::abs(*lens_ - now.position) - kFocusDepth, 0);
}

void VirtualCamera::RestartStream() {
  const std::lock_guard lock(mutex_);
  number_ = 0;
  lastReady_ = Clock::now();
  armedSince_.reset();
}

VirtualCamera::Clock::duration VirtualCamera::FramePeriod(const Readout& readout) const {
  if (!framesPerSecond_) return Seconds(readout.frameSeconds);
  return *framesPerSecond_ > 0 ? Seconds(1 / *framesPerSecond_) : Clock::duration::zero();
}

VirtualCamera::Clock::time_point VirtualCamera::ReadyTime(const Readout& readout,
                                                          Clock::time_point requested) const {
  const Clock::duration period = FramePeriod(readout);
  if (!readout.streams) return Clock::time_point::max();
  if (!readout.triggered) {
    const Clock::time_point next = lastReady_ + period;
    return std::max(next + kPatience < requested ? requested : next, stalledUntil_);
  }
  if (triggerRate_ <= 0) return Clock::time_point::max();
  // The line pulses from the moment of plugging in. The sensor hears the first pulse after it was asked for a
  // frame and has finished the one before.
  const Clock::time_point armed = std::max({armedSince_.value_or(requested), lastReady_, stalledUntil_});
  const double pulses = std::floor(std::chrono::duration<double>(armed - pluggedIn_).count() * triggerRate_);
  return pluggedIn_ + Seconds((pulses + 1) / triggerRate_) + period;
}

std::optional<SimFault::Kind> VirtualCamera::MeetFaults(Clock::time_point now, Clock::duration period) {
  std::optional<SimFault::Kind> forWire;
  for (auto fault = faults_.begin(); fault != faults_.end();) {
    if (fault->frame != frames_ + 1) {
      ++fault;
      continue;
    }
    switch (fault->kind) {
      case SimFault::Kind::Unplug:
        unplugged_ = true;
        changed_.notify_all();
        break;
      case SimFault::Kind::Stall:
        stalledUntil_ = now + fault->duration;
        break;
      case SimFault::Kind::Drop:
        ++frames_;
        ++number_;
        lastReady_ = std::max(lastReady_ + period, now);
        faults_.erase(fault);
        return MeetFaults(now, period);  // of the frame that comes instead
      case SimFault::Kind::Short:
      case SimFault::Kind::Garbage:
        forWire = fault->kind;
        ++fault;  // stays until the frame has left: the wait for it may time out
        continue;
    }
    fault = faults_.erase(fault);
  }
  return forWire;
}

DriverError VirtualCamera::AwaitFrame(std::uint32_t milliseconds, Frame* frame) {
  std::unique_lock lock(mutex_);
  const Clock::time_point requested = Clock::now();
  const Clock::time_point deadline = requested + std::chrono::milliseconds(milliseconds);
  if (unplugged_) return DriverError::NotConnected;
  frame->fault = MeetFaults(requested, FramePeriod(sensor_.Decode(halfClock_ ? 2 : 1)));

  while (!unplugged_) {
    const Readout readout = sensor_.Decode(halfClock_ ? 2 : 1);
    // A host that only looks whether there is a frame has asked for it the first time it looked.
    if (!readout.triggered) armedSince_.reset();
    if (readout.triggered && !armedSince_) armedSince_ = requested;
    const Clock::time_point ready = ReadyTime(readout, requested);
    const Clock::time_point now = Clock::now();
    if (ready <= now && ready <= deadline) {
      lastReady_ = ready;
      armedSince_.reset();
      ++frames_;
      ++number_;
      std::erase_if(faults_, [this](const SimFault& fault) { return fault.frame == frames_; });
      frame->picture = {readout, number_, seed_ * 1000003 + frames_, Blur()};
      return DriverError::None;
    }
    if (now >= deadline) return DriverError::Timeout;
    const std::uint64_t settings = settings_;
    changed_.wait_until(lock, std::min(ready, deadline), [&] { return unplugged_ || settings_ != settings; });
  }
  return DriverError::NotConnected;
}

void VirtualCamera::Expose(const Frame& frame, int bytesPerSample, std::span<std::uint8_t> out,
                           std::size_t pitch) {
  if (frame.fault == SimFault::Kind::Garbage) {
    std::minstd_rand garbage(static_cast<std::uint32_t>(frame.picture.noise));
    for (std::uint8_t& byte : out) byte = static_cast<std::uint8_t>(garbage() >> 8);
    return;
  }
  const std::lock_guard lock(renderMutex_);
  const std::size_t written = renderer_.Render(frame.picture, bytesPerSample, out, pitch);
  std::ranges::fill(out.subspan(written), std::uint8_t{0});
}

void VirtualCamera::Unplug() {
  const std::lock_guard lock(mutex_);
  unplugged_ = true;
  changed_.notify_all();
}

bool VirtualCamera::IsUnplugged() const {
  const std::lock_guard lock(mutex_);
  return unplugged_;
}

void VirtualCamera::NoteProtocolError(std::string what) {
  const std::lock_guard lock(mutex_);
  if (protocolErrors_.size() < kMaxProtocolErrors) protocolErrors_.push_back(std::move(what));
}

std::vector<std::string> VirtualCamera::ProtocolErrors() const {
  const std::lock_guard lock(mutex_);
  return protocolErrors_;
}

}  // namespace zel
