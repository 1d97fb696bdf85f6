#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "sim/SimDevice.h"

namespace zel {

/// What the wires of cameras that the system shows as a disk or a volume have in common: handles with a
/// position, opened for reading and writing. Each family says what can be read and written where.
class SectorWire : public SimDevice {
 public:
  using SimDevice::SimDevice;

  std::unique_ptr<DriverHandle> Open(const OpenRequest& request, DriverError* error) override;

 protected:
  static constexpr std::size_t kSectorSize = 512;

  virtual bool AllowsShare(std::uint32_t share) const { return share == (kShareRead | kShareWrite); }
  virtual DriverResult ReadAt(std::uint64_t position, std::span<std::uint8_t> out) = 0;
  virtual DriverResult WriteAt(std::uint64_t position, std::span<const std::uint8_t> in) = 0;

  /// Notes a protocol error and fails.
  DriverResult Refuse(DriverError error, const std::string& what);
  static std::string Hex(std::uint64_t value);

 private:
  class Handle;
};

}  // namespace zel
