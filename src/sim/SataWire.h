#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <optional>

#include "sim/SectorWire.h"

namespace zel {

// What the controller knows from the settings, for sensors that leave it to the controller: shown to the
// sensor as registers that no request reaches.
constexpr std::uint16_t kControllerTrigger = 0xFF00;
constexpr std::uint16_t kControllerLeft = 0xFF01, kControllerTop = 0xFF02;
constexpr std::uint16_t kControllerColumns = 0xFF03, kControllerRows = 0xFF04;

/// The wire of the SATA cameras: a volume with one sector for commands, settings and status, and two image
/// areas that the camera fills in turn. Takes only what the camera defines; all else fails and is noted as a
/// protocol error: a request must bring back the sector as it was read but for its own fields, settings must
/// be zero outside of theirs, and the sensor's registers can be reached only while the camera is stopped. It
/// takes a while to take settings over and to carry a register's value to the sensor: requests in that time
/// are lost.
///
/// A frame has rows of the aligned width, zero behind the window's columns, and ends in zeros. Reading an
/// area waits until a frame that was not read before is in it.
class SataWire : public SectorWire {
 public:
  SataWire(SimCameraAddress address, const SensorMap& map, std::shared_ptr<const Scene> scene,
           const SimConfiguration& configuration);

  std::u16string Path() const override;

 protected:
  DriverResult ReadAt(std::uint64_t position, std::span<std::uint8_t> out) override;
  DriverResult WriteAt(std::uint64_t position, std::span<const std::uint8_t> in) override;

 private:
  using SectorBytes = std::array<std::uint8_t, kSectorSize>;

  DriverResult GiveSector(std::span<std::uint8_t> out);
  DriverResult GiveImage(std::size_t area, std::span<std::uint8_t> out);
  DriverResult TakeRequest(const SectorBytes& written);
  DriverResult TakeSettings(const SectorBytes& written);
  DriverError AwaitArea(std::size_t area, VirtualCamera::Frame* frame);
  void TellSensor();
  void SetRun(std::uint8_t run);
  bool WindowDiffers(const SectorBytes& written) const;
  void FinishRequest();
  bool IsRunning() const;
  std::size_t FrameBytes() const;  ///< of the picture, without the end of the last sector
  std::size_t Pitch() const;

  mutable std::mutex mutex_;  // guards what follows; not held while a frame is awaited or exposed
  SectorBytes sector_{};      // as the host reads it
  int busyReads_ = 0;         // until the request is done
  SimTimer settling_{Clock()}, carrying_{Clock()}, locking_{Clock()};
  std::uint32_t runs_ = 0;  // counts starts and stops
  std::size_t nextArea_ = 0;
  std::array<std::optional<VirtualCamera::Frame>, 2> areas_;  // frames not read yet
};

}  // namespace zel
