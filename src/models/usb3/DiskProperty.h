#pragma once

#include "models/WindowedProperty.h"
#include "transport/usb3/CZELDevicePropertyImplUSB3.h"

namespace zel {

/// The disk-style family's property object as its models use it.
using DiskProperty = WindowedProperty<CZELDevicePropertyImplUSB3>;

}  // namespace zel
