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

/// What tells the control of one type from the next.
struct ExposureControl {
  /// The control's own limits, whatever the camera allows by hand.
  Exposure least{.shutter = 80, .gain = 10};
  Exposure most{.shutter = 2000, .gain = 60};
  /// Brightness that an exposure gives, in any unit, where a step may be coarse: no step then leads past the
  /// target. Null: between the limits every step is fine enough.
  double (*brightness)(const Exposure& exposure) = nullptr;
};

/// One step from `now` towards the target mean, larger the farther away it is; `now` itself when the mean is
/// close enough. Both settings are stepped; they stay between the limits.
Exposure NextExposure(const ExposureControl& control, LONG target, LONG mean, const Exposure& now);

/// Shortens the steps to `next` that would lead past the target. A shutter that can't come nearer in its
/// steps goes past it only when the gain has come to its limit; the gain, if `gainOn`, then takes back what
/// is too much.
Exposure WithoutOvershoot(const ExposureControl& control, LONG target, LONG mean, const Exposure& now,
                          Exposure next, bool gainOn);

/// Looks at a frame and moves shutter or gain of its camera one step towards the target, where the camera's
/// settings switch that on. One setting changes per frame, the shutter first; what the camera refuses is
/// tried again with the next frame.
void ControlExposure(CZELDeviceProperty& property, const ExposureControl& control, LONG target,
                     const RawPicture& picture);

}  // namespace zel
