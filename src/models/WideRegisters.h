#pragma once

#include "platform/ComponentTypes.h"

namespace zel {

/// A family of the USB camera driver with a sensor whose registers have 16-bit addresses.
template <class FamilyProperty>
class WideRegisters : public FamilyProperty {
 public:
  HRESULT SetRegister(LONG address, LONG value) override { return this->SetWideRegister(address, value); }
  HRESULT GetRegister(LONG address, LONG* value) override { return this->GetWideRegister(address, value); }
};

}  // namespace zel
