#pragma once

#include <atomic>

#include "platform/PassingDriverHost.h"

namespace zel::tool {

/// Passes everything on to the host that was current before and remembers why an open failed, which the
/// camera's own answer (a plain failure) does not tell. Handles come from that host and may outlive this
/// object.
class OpenWatch : public PassingDriverHost {
 public:
  OpenWatch() : PassingDriverHost(CurrentDriverHost()) {}

  /// Of the last failed open; None when all succeeded.
  DriverError LastError() const { return lastError_; }

  std::unique_ptr<DriverHandle> Open(const OpenRequest& request, DriverError* error) override {
    auto handle = PassingDriverHost::Open(request, error);
    if (!handle) lastError_ = *error;
    return handle;
  }
  std::optional<std::u16string> InterfacePath(const GUID& interfaceClass, std::uint32_t index) override {
    auto path = PassingDriverHost::InterfacePath(interfaceClass, index);
    if (!path) lastError_ = DriverError::FileNotFound;
    return path;
  }

 private:
  std::atomic<DriverError> lastError_{DriverError::None};
};

}  // namespace zel::tool
