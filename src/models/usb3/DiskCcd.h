#pragma once

#include "models/Ccd.h"
#include "models/usb3/DiskModel.h"

namespace zel {

/// Settings of the disk-style CCD cameras without binning. Their timing generator and front end decode 8 bits
/// of an address; what lies above would hit another register.
class DiskCcdProperty : public ccd::Map9A04<DiskProperty> {
 public:
  HRESULT SetRegister(LONG address, LONG value) override {
    if (address < 0 || address > 0xFF) return E_INVALIDARG;
    return CZELDevicePropertyImplUSB3::SetRegister(address, value);
  }

 protected:
  using PlainMap::PlainMap;
};

}  // namespace zel
