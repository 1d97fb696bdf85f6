#pragma once

#include "transport/usb/PipeCameraProperty.h"

namespace zel {

/// Settings of a USB 2.0 camera: FPGA registers of 16 bits, half clock as an on/off command.
class CZELDevicePropertyImplUSB : public PipeCameraProperty {
 public:
  HRESULT SetFpgaRegister(LONG address, LONG value) override;  ///< 1 when the camera took it, else 0
  HRESULT GetFpgaRegister(LONG address, LONG* value) override;
  HRESULT SetHalfClock(LONG on) override;
  HRESULT GetHalfClock(LONG* on) override;
  HRESULT ApplyColorMatrix() override;
};

}  // namespace zel
