#pragma once

#include <mutex>
#include <optional>

#include "sim/SectorWire.h"

namespace zel {

/// The wire of the disk-style USB 3.0 cameras: a physical drive with a status sector, a command sector and an
/// image area. Takes only what the camera defines; all else fails and is noted as a protocol error. Preparing
/// a capture resets gain and shutter and takes a while, in which registers are deaf.
///
/// A frame is ready once the sensor has read it out; it can be read once, as a whole: the picture in rows of
/// the window's width without gaps, zeros up to the end of the last sector.
class DiskWire : public SectorWire {
 public:
  using SectorWire::SectorWire;

  std::u16string Path() const override;

 protected:
  /// Programs that only identify the camera keep others from writing to it.
  bool AllowsShare(std::uint32_t share) const override {
    return share == kShareRead || SectorWire::AllowsShare(share);
  }
  DriverResult ReadAt(std::uint64_t position, std::span<std::uint8_t> out) override;
  DriverResult WriteAt(std::uint64_t position, std::span<const std::uint8_t> in) override;

 private:
  /// First byte of a register access that the second one has to follow.
  struct HalfRegister {
    std::uint8_t command;
    std::uint16_t address;
    std::uint8_t high;
  };

  DriverResult GiveStatus(std::span<std::uint8_t> out);
  DriverResult GiveImage(std::span<std::uint8_t> out);
  void AccessRegister(std::uint8_t command, std::uint16_t address, std::uint8_t byte);
  std::optional<HalfRegister> TakeHalf(std::uint8_t command, std::uint16_t address);

  std::mutex mutex_;  // guards what follows; not held while a picture is exposed
  bool prepared_ = false;
  SimTimer preparing_{Clock()};
  std::optional<VirtualCamera::Frame> ready_;
  std::optional<HalfRegister> half_;
  std::uint8_t readBack_ = 0;
  bool answering_ = false;  // the next status holds the answer of a register read
};

}  // namespace zel
