#pragma once

#include <memory>

#include "platform/DriverHost.h"
#include "platform/posix/UsbDevice.h"

namespace zel {

/// The maker's USB driver: pipe 0 is the first bulk OUT endpoint of the device, pipes 1 and 2 are its first
/// two bulk IN endpoints. Null when the device does not have them.
std::unique_ptr<DriverHandle> MakeUsbPipeHandle(std::shared_ptr<UsbDevice> device);

/// The FX3 controller's standard driver.
std::unique_ptr<DriverHandle> MakeUsbFx3Handle(std::shared_ptr<UsbDevice> device);

}  // namespace zel
