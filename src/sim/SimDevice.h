#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/DriverHost.h"
#include "sim/SimConfiguration.h"
#include "sim/VirtualCamera.h"

namespace zel {

/// A simulated camera as its driver shows it to programs: what the five families' wires have in common. Owned
/// in common by the host and the open handles. Any thread.
class SimDevice : public std::enable_shared_from_this<SimDevice> {
 public:
  SimDevice(SimCameraAddress address, const SensorMap& map, std::shared_ptr<const Scene> scene,
            const SimConfiguration& configuration)
      : address_(address), camera_(map, std::move(scene), configuration) {}
  virtual ~SimDevice() = default;

  SimCameraAddress Address() const { return address_; }
  VirtualCamera& Camera() { return camera_; }
  const VirtualCamera& Camera() const { return camera_; }

  /// The path that opens it.
  virtual std::u16string Path() const = 0;
  /// The interface class that lists it, where its driver has one.
  virtual std::optional<GUID> InterfaceClass() const { return {}; }
  /// Opens it for a request that carries its path; null with the reason in `error`.
  virtual std::unique_ptr<DriverHandle> Open(const OpenRequest& request, DriverError* error) = 0;

 private:
  const SimCameraAddress address_;
  VirtualCamera camera_;
};

/// Driver name of a type: "Zel", the family word, the type number in two letters A = 0 .. J = 9.
std::u16string SimDriverName(const SensorMap& map);

}  // namespace zel
