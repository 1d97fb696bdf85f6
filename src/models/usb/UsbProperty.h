#pragma once

#include "models/WindowedProperty.h"
#include "transport/usb/CZELDevicePropertyImplUSB.h"

namespace zel {

/// The USB 2.0 family's property object as its models use it.
class UsbProperty : public WindowedProperty<CZELDevicePropertyImplUSB> {
 public:
  /// Settings are cut to the bits that the sensor has.
  static constexpr bool kMasksSettings = true;

  LONG InitializeCamera() override { return 1; }

  /// Takes any window; the next capture preparation refuses one that does not lie on the sensor.
  HRESULT SetROI(LONG x, LONG y, LONG width, LONG height) override {
    Edit(kRoiLeft).current = x;
    Edit(kRoiTop).current = y;
    Edit(kRoiWidth).current = width;
    Edit(kRoiHeight).current = height;
    return S_OK;
  }

  /// Always returns 1. Sub-sampling works on the full frame only, so reading the window resets it then.
  HRESULT GetROI(LONG* x, LONG* y, LONG* width, LONG* height) override {
    const LONG code = Record(kSubSampleX).current;
    if (code > 0) SetROI(0, 0, Record(kRoiWidth).maximum, Record(kRoiHeight).maximum);
    const LONG divisor = code >= 1 && code <= 3 ? 1 << code : 1;
    Put(x, Record(kRoiLeft).current);
    Put(y, Record(kRoiTop).current);
    Put(width, Record(kRoiWidth).current / divisor);
    Put(height, Record(kRoiHeight).current / divisor);
    return 1;
  }
};

}  // namespace zel
