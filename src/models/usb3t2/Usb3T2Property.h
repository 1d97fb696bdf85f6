#pragma once

#include <algorithm>

#include "transport/usb3t2/CZELPropertyImplUSB3T2.h"

namespace zel {

/// The family's property object as its models use it: with the sensor's registers, half clock as a stored
/// setting, and setters that clamp.
class Usb3T2Property : public CZELPropertyImplUSB3T2 {
 public:
  HRESULT SetRegister(LONG address, LONG value) override { return SetSensorRegister(address, value); }
  HRESULT GetRegister(LONG address, LONG* value) override { return GetSensorRegister(address, value); }

  /// Takes effect with the next capture.
  HRESULT SetHalfClock(LONG on) override {
    return IsAttached() ? CZELDevicePropertyImpl::SetHalfClock(on) : E_FAIL;
  }
  HRESULT GetHalfClock(LONG* on) override { return CZELDevicePropertyImpl::GetHalfClock(on); }

 protected:
  /// Clamps a value into the range of a setting, gives it to `program` and stores it when the camera has
  /// taken it.
  template <class Program>
  HRESULT SetClamped(LONG id, LONG value, Program program) {
    const PropertyRecord& record = Record(id);
    const LONG clamped = std::clamp(value, record.minimum, record.maximum);
    const HRESULT result = program(clamped);
    if (FAILED(result)) return result;
    StoreCurrent(id, clamped);
    return S_OK;
  }
};

}  // namespace zel
