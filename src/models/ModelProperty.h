#pragma once

#include <functional>

#include "models/ModelTable.h"
#include "property/CZELDevicePropertyImpl.h"
#include "property/OutParameter.h"

namespace zel {

/// Writes the ranges of a row into the records of window, sub-sampling, gain and shutter; `edit` gives access
/// to one record. Empty fields of the row leave the records as they are.
void ApplyModelRow(const ModelRow& row, const std::function<PropertyRecord&(LONG id)>& edit);

/// Base of a model's property class: the family's property with the ranges of the camera type, and what
/// models do with registers again and again.
template <class FamilyProperty>
class ModelProperty : public FamilyProperty {
 protected:
  explicit ModelProperty(LONG type) {
    ApplyModelRow(ModelOf(type), [this](LONG id) -> PropertyRecord& { return this->Edit(id); });
  }

  /// Makes a setting an on/off switch that is off.
  void OfferSwitch(LONG id) { this->Edit(id) = {.minimum = 0, .maximum = 1, .supported = 1}; }

  /// Reads a register, keeps the bits of `keep`, sets those of `set`, writes it back.
  HRESULT ModifyRegister(LONG address, LONG keep, LONG set) {
    LONG value = 0;
    if (FAILED(this->GetRegister(address, &value))) return E_FAIL;
    return this->SetRegister(address, (value & keep) | set);
  }

  /// Sets or clears bits of a register.
  HRESULT SwitchBits(LONG address, LONG bits, bool on) {
    return ModifyRegister(address, ~bits, on ? bits : 0);
  }

  /// Reports whether a bit of a register is set, and makes that the current value of a switch.
  HRESULT ReadSwitch(LONG address, LONG bit, LONG id, LONG* on) {
    LONG value = 0;
    if (FAILED(this->GetRegister(address, &value))) return E_FAIL;
    this->Edit(id).current = (value & bit) != 0;
    Put(on, this->Record(id).current);
    return S_OK;
  }
};

}  // namespace zel
