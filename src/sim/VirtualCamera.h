#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/DriverHost.h"
#include "sim/FrameRenderer.h"
#include "sim/Sensor.h"
#include "sim/SimConfiguration.h"

namespace zel {

/// A simulated camera without its wire: a sensor in front of a scene, its timing, its trigger line and its
/// faults. All five families stand on it. Any thread may call anything; setting registers never waits for a
/// frame.
class VirtualCamera {
 public:
  struct Frame {
    FrameRenderer::Frame picture;
    std::optional<SimFault::Kind> fault;  ///< Short or Garbage, for the wire to act upon
  };

  /// `scene` has the sensor's size.
  VirtualCamera(const SensorMap& map, std::shared_ptr<const Scene> scene,
                const SimConfiguration& configuration);

  const SensorMap& Map() const { return *map_; }

  void WriteRegister(std::uint32_t address, std::uint32_t value);
  std::uint32_t ReadRegister(std::uint32_t address) const;
  void ResetSensor();
  void ResetExposure();  ///< shutter and gain alone
  void SetHalfClock(bool on);
  bool HalfClock() const;
  /// Drives the lens of a camera that has one to a position, 0..255; without one everything is sharp.
  void MoveLens(int position);
  /// Moves the scene to where the lens shows it sharp at a position, for good.
  void MoveScene(int position);

  /// Counts frames from 1 again.
  void RestartStream();

  /// Waits until the sensor has exposed and read out the next frame, by the settings of that moment. None,
  /// Timeout (nothing is lost: the frame comes with a later call) or NotConnected.
  DriverError AwaitFrame(std::uint32_t milliseconds, Frame* frame);

  /// Writes a frame's picture, zeros after it; `bytesPerSample` and `pitch` as `FrameRenderer::Render` takes
  /// them.
  void Expose(const Frame& frame, int bytesPerSample, std::span<std::uint8_t> out, std::size_t pitch = 0);

  /// Pulls the plug: all waits end, nothing works any more.
  void Unplug();
  bool IsUnplugged() const;

  /// Notes that the host broke the protocol of the camera's wire.
  void NoteProtocolError(std::string what);
  std::vector<std::string> ProtocolErrors() const;

 private:
  using Clock = std::chrono::steady_clock;

  Clock::duration FramePeriod(const Readout& readout) const;
  /// Of the next frame, in pixels.
  double Blur() const;
  Clock::time_point ReadyTime(const Readout& readout, Clock::time_point requested) const;
  /// Acts on the faults of the frame that comes next; returns what the wire has to do about it.
  std::optional<SimFault::Kind> MeetFaults(Clock::time_point now, Clock::duration period);

  const SensorMap* const map_;
  const std::optional<double> framesPerSecond_;
  const double triggerRate_;
  const std::uint64_t seed_;
  const Clock::time_point pluggedIn_ = Clock::now();

  mutable std::mutex mutex_;
  std::condition_variable changed_;  // unplugged, or registers written
  Sensor sensor_;
  bool halfClock_ = false;
  std::optional<int> lens_;
  std::vector<SimFocus> focus_;
  bool unplugged_ = false;
  std::uint64_t settings_ = 0;  // counts changes
  std::uint64_t frames_ = 0;    // since plugged in
  std::uint32_t number_ = 0;    // since the stream started
  Clock::time_point lastReady_ = pluggedIn_;
  Clock::time_point stalledUntil_{};
  std::optional<Clock::time_point> armedSince_;  // waits for the trigger
  std::vector<SimFault> faults_;                 // those still to come
  std::vector<std::string> protocolErrors_;

  std::mutex renderMutex_;  // never taken together with the other
  FrameRenderer renderer_;
};

}  // namespace zel
