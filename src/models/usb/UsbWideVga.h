#pragma once

#include "models/WideVga.h"
#include "models/usb/UsbModel.h"

namespace zel::wide_vga {

/// Read-out of the USB 2.0 cameras with this map, in pixel clocks.
constexpr UsbTiming kUsbTiming{.lineBlanking = 94, .shortestLine = 660, .frameExtra = 4 * 846};

/// A sensor with this map behind the USB 2.0 controller.
using UsbSensor = Property<UsbProperty>;

}  // namespace zel::wide_vga
