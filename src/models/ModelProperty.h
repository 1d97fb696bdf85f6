#pragma once

#include <algorithm>
#include <functional>
#include <optional>

#include "models/CaptureWindow.h"
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
 public:
  /// The window that the next capture reads; nothing when it does not lie on the sensor (single records of
  /// the window can be set so).
  std::optional<CaptureWindow> WantedWindow() {
    CaptureWindow window;
    this->GetROI(&window.x, &window.y, &window.width, &window.height);
    const auto fits = [this](LONG start, LONG size, LONG id) {
      const PropertyRecord& extent = this->Record(id);
      return start >= 0 && size > 0 && extent.current <= extent.maximum &&
             start <= extent.maximum - extent.current;
    };
    if (!fits(window.x, window.width, kRoiWidth) || !fits(window.y, window.height, kRoiHeight)) return {};
    return window;
  }

 protected:
  explicit ModelProperty(LONG type) {
    ApplyModelRow(ModelOf(type), [this](LONG id) -> PropertyRecord& { return this->Edit(id); });
  }

  /// Makes a setting an on/off switch that is off.
  void OfferSwitch(LONG id) { this->Edit(id) = {.minimum = 0, .maximum = 1, .supported = 1}; }

  LONG Clamped(LONG id, LONG value) const {
    return std::clamp(value, this->Record(id).minimum, this->Record(id).maximum);
  }

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
