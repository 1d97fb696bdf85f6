#pragma once

#include "models/WindowedProperty.h"
#include "transport/usb3t2/CZELPropertyImplUSB3T2.h"

namespace zel {

/// The FX3 family's property object as its models use it: with the sensor's registers, and half clock as a
/// stored setting.
class Usb3T2Property : public WindowedProperty<CZELPropertyImplUSB3T2> {
 public:
  /// The reset leaves the lens where another program drove it.
  LONG InitializeCamera() override {
    SetProperty(kFocusPosition, Record(kFocusPosition).current);
    return 1;
  }

  HRESULT SetRegister(LONG address, LONG value) override { return SetSensorRegister(address, value); }
  HRESULT GetRegister(LONG address, LONG* value) override { return GetSensorRegister(address, value); }

  /// Takes effect with the next capture.
  HRESULT SetHalfClock(LONG on) override {
    return IsAttached() ? CZELDevicePropertyImpl::SetHalfClock(on) : E_FAIL;
  }
  HRESULT GetHalfClock(LONG* on) override { return CZELDevicePropertyImpl::GetHalfClock(on); }
};

}  // namespace zel
