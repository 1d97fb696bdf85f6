#pragma once

#include "platform/ComponentTypes.h"

namespace zel {

class CZELDeviceProperty;

/// A raw frame as the exposure control sees it: rows without gaps, samples of one byte, or of two with the
/// sensor's 10 bits, low byte first.
struct RawPicture {
  const unsigned char* samples;
  LONG width;
  LONG height;
  int bytesPerSample;
};

/// Mean of the centre ninth on the 8-bit scale, without its fraction. Of at least 3 x 3 pixels.
LONG CentreMean(const RawPicture& picture);

struct Exposure {
  LONG shutter;
  LONG gain;

  bool operator==(const Exposure&) const = default;
};

/// One step from `now` towards the target mean, larger the farther away it is; `now` itself when the mean is
/// close enough. Both settings are stepped; they stay between the control's own limits.
Exposure NextExposure(LONG target, LONG mean, const Exposure& now);

/// Looks at a frame and moves shutter or gain of its camera one step towards the target, where the camera's
/// settings switch that on. One setting changes per frame, the shutter first; what the camera refuses is
/// tried again with the next frame.
void ControlExposure(CZELDeviceProperty& property, LONG target, const RawPicture& picture);

}  // namespace zel
