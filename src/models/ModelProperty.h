#pragma once

#include <algorithm>
#include <functional>
#include <initializer_list>
#include <optional>

#include "models/CaptureWindow.h"
#include "models/ModelTable.h"
#include "models/RegisterSource.h"
#include "property/CZELDevicePropertyImpl.h"
#include "property/OutParameter.h"

namespace zel {

/// Writes the ranges of a row into the records of window, sub-sampling, gain and shutter; `edit` gives access
/// to one record. Empty fields of the row leave the records as they are.
void ApplyModelRow(const ModelRow& row, const std::function<PropertyRecord&(LONG id)>& edit);

/// The bits of a value that one register takes, moved down by `shift`.
struct RegisterPart {
  LONG address;
  LONG mask;
  int shift = 0;
};

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
  void OfferSwitches(std::initializer_list<LONG> ids) {
    for (const LONG id : ids) OfferSwitch(id);
  }

  /// The one way in which a setting with a range reaches the sensor: cut to `mask` or clamped to its range,
  /// as the family does it, given to `program` (an HRESULT of the value), stored when the sensor took it.
  template <class Program>
  HRESULT Adjust(LONG id, LONG value, LONG mask, Program program) {
    if (this->Record(id).supported == 0) return E_NOTIMPL;
    value = FamilyProperty::kMasksSettings ? value & mask : Clamped(id, value);
    const HRESULT result = program(value);
    return FAILED(result) ? result : FamilyProperty::SetProperty(id, value);
  }

  /// The same for sensors of a masking family where nothing says which bits a register has: what the store
  /// will refuse is not sent.
  template <class Program>
  HRESULT AdjustInRange(LONG id, LONG value, Program program) {
    if (this->Record(id).supported == 0) return E_NOTIMPL;
    if (value != Clamped(id, value)) return E_INVALIDARG;
    const HRESULT result = program(value);
    return FAILED(result) ? result : FamilyProperty::SetProperty(id, value);
  }

  /// The same, of a switch that is bits of one register; the caller stores it.
  HRESULT SwitchSetting(LONG id, LONG address, LONG bits, LONG on) {
    return this->Record(id).supported == 0 ? E_NOTIMPL : SwitchBits(address, bits, on != 0);
  }

  /// Writes the parts of a value in their order; stops at the first that fails.
  HRESULT WriteParts(LONG value, std::initializer_list<RegisterPart> parts) {
    for (const RegisterPart& part : parts) {
      const HRESULT result = this->SetRegister(part.address, (value & part.mask) >> part.shift);
      if (FAILED(result)) return result;
    }
    return S_OK;
  }

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
