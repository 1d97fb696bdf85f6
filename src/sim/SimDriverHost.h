#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/DriverHost.h"
#include "sim/SimConfiguration.h"
#include "sim/SimDevice.h"

namespace zel {

/// A computer with simulated cameras plugged in, and nothing else. Its destruction pulls all plugs: calls
/// that wait in a handle end, and handles still open only report that the camera is not connected.
class SimDriverHost : public DriverHost {
 public:
  /// Builds the cameras of a configuration. Null, with a sentence in `error` (never null), when a type is not
  /// simulated or the scene can't be read.
  static std::unique_ptr<SimDriverHost> Create(const SimConfiguration& configuration, std::string* error);

  explicit SimDriverHost(std::vector<std::shared_ptr<SimDevice>> devices,
                         std::shared_ptr<SimClock> clock = SimConfiguration().clock)
      : devices_(std::move(devices)), clock_(std::move(clock)) {}
  ~SimDriverHost() override;

  std::unique_ptr<DriverHandle> Open(const OpenRequest& request, DriverError* error) override;
  std::optional<std::u16string> InterfacePath(const GUID& interfaceClass, std::uint32_t index) override;
  void Sleep(std::uint32_t milliseconds) override;
  std::uint64_t Milliseconds() override;
  void ShowMessage(std::u16string_view text) override;  ///< on standard error

  /// The camera at an address, for tests to look behind the wire; null when there is none.
  VirtualCamera* Camera(SimCameraAddress address);
  /// How many handles of it are open.
  int Handles(SimCameraAddress address) const;

 private:
  const std::vector<std::shared_ptr<SimDevice>> devices_;
  const std::shared_ptr<SimClock> clock_;
};

}  // namespace zel
