#pragma once

#include "platform/ComponentTypes.h"

namespace zel {

/// Range and value of one numbered property. In the units of the camera type.
struct PropertyRecord {
  LONG minimum = 0;
  LONG maximum = 0;
  LONG defaultValue = 0;
  LONG current = 0;
  LONG supported = 0;  ///< 0 or 1
  LONG spare = 0;
};

/// Numbers of the properties, as applications use them in `SetProperty`.
enum PropertyId : LONG {
  kRoiLeft = 0,
  kRoiTop = 1,
  kRoiWidth = 2,
  kRoiHeight = 3,
  kSubSampleX = 4,
  kSubSampleY = 5,
  kHorMirror = 6,
  kVerMirror = 7,
  kExtTrigger = 8,
  kHalfClock = 9,
  kStrobe = 10,
  kAnalogGlobalGain = 11,
  kDigitalGlobalGain = 12,
  kShutter = 13,
  kColorGainRed = 14,
  kColorGainGreen = 15,
  kColorGainBlue = 16,
  kColorOffset = 17,       ///< four channels, 17..20
  kChannelValueSet2 = 21,  ///< four channels, 21..24
  kThresh = 25,
  kAutoThresh = 26,
  kNoGainDep = 27,
  kCalCtrl = 28,
  kAuxValue1 = 29,
  kAuxValue2 = 30,
  kWhitePixelCanceling = 31,
  kBlackPixelCanceling = 32,
  kDenoise = 33,
  kNightMode = 34,
  kEdgeEnhance = 35,
  kLensCorrection = 36,
  kSaturation = 37,
  kBrightness = 38,
  kContrast = 39,
  kHue = 40,
  kGamma = 41,
  kModelFirst = 42,  ///< 42..56 belong to single camera types
  kFocusPosition = 48,
  kColorCorrection = 57,
  kAuxValue3 = 60,
  kAuxValue4 = 61,
  kDotFilterThreshold = 62,
  kDotFilterEnabled = 63,
  kSharpness = 64,
  kPropertyCount = 65,
};

constexpr bool IsPropertyId(LONG id) {
  return id >= 0 && id < kPropertyCount;
}

}  // namespace zel
