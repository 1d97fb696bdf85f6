#pragma once

#include "models/ModelProperty.h"

namespace zel {

/// A bit of a register.
struct RegisterBit {
  LONG address = 0;
  LONG bit = 0;
};

/// Where a sensor has its mirrors and its trigger.
struct SensorSwitches {
  RegisterBit horMirror = {};
  RegisterBit verMirror = {};
  RegisterBit trigger = {};
};

/// A sensor whose mirrors and trigger are bits of registers. A type offers those of them that its camera has.
template <class FamilyProperty>
class SwitchedProperty : public ModelProperty<FamilyProperty> {
 public:
  HRESULT SetHorMirror(LONG on) override {
    const HRESULT result =
        this->SwitchSetting(kHorMirror, switches_.horMirror.address, switches_.horMirror.bit, on);
    return FAILED(result) ? result : FamilyProperty::SetHorMirror(on);
  }

  HRESULT SetVerMirror(LONG on) override {
    const HRESULT result =
        this->SwitchSetting(kVerMirror, switches_.verMirror.address, switches_.verMirror.bit, on);
    return FAILED(result) ? result : FamilyProperty::SetVerMirror(on);
  }

  HRESULT SetExtTrigger(LONG on) override {
    const HRESULT result =
        this->SwitchSetting(kExtTrigger, switches_.trigger.address, switches_.trigger.bit, on);
    return FAILED(result) ? result : FamilyProperty::SetExtTrigger(on);
  }

 protected:
  SwitchedProperty(LONG type, const SensorSwitches& switches)
      : ModelProperty<FamilyProperty>(type), switches_(switches) {}

 private:
  const SensorSwitches switches_;
};

}  // namespace zel
