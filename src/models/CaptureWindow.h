#pragma once

#include "platform/ComponentTypes.h"

namespace zel {

/// What a capture reads: where the picture starts on the sensor, and how large it is when it arrives, after
/// sub-sampling.
struct CaptureWindow {
  LONG x = 0;
  LONG y = 0;
  LONG width = 0;
  LONG height = 0;
};

}  // namespace zel
