#pragma once

#include <atomic>
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
      : address_(address), clock_(configuration.clock), camera_(map, std::move(scene), configuration) {}
  virtual ~SimDevice() = default;

  SimCameraAddress Address() const { return address_; }
  VirtualCamera& Camera() { return camera_; }
  const VirtualCamera& Camera() const { return camera_; }

  /// How many handles are open.
  int Handles() const { return handles_; }

  /// The path that opens it.
  virtual std::u16string Path() const = 0;
  /// The interface class that lists it, where its driver has one.
  virtual std::optional<GUID> InterfaceClass() const { return {}; }
  /// Opens it for a request that carries its path; null with the reason in `error`.
  virtual std::unique_ptr<DriverHandle> Open(const OpenRequest& request, DriverError* error) = 0;

 protected:
  friend class SimHandle;

  SimClock& Clock() const { return *clock_; }
  /// The last handle was closed.
  virtual void OnIdle() {}

 private:
  const SimCameraAddress address_;
  const std::shared_ptr<SimClock> clock_;
  VirtualCamera camera_;
  std::atomic<int> handles_ = 0;
};

/// An open handle of a simulated camera: counted, and the camera lives as long as it.
class SimHandle : public DriverHandle {
 public:
  explicit SimHandle(std::shared_ptr<SimDevice> device) : device_(std::move(device)) { ++device_->handles_; }
  ~SimHandle() override {
    if (--device_->handles_ == 0) device_->OnIdle();
  }
  SimHandle(const SimHandle&) = delete;
  SimHandle& operator=(const SimHandle&) = delete;

 private:
  const std::shared_ptr<SimDevice> device_;
};

/// Driver name of a type: "Zel", the family word, the type number in two letters A = 0 .. J = 9.
std::u16string SimDriverName(const SensorMap& map);

}  // namespace zel
