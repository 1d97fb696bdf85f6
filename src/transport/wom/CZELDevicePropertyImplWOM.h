#pragma once

#include "transport/usb/PipeCameraProperty.h"

namespace zel {

/// Settings of a WOM camera: FPGA registers of 8 bits, which also hold frame size, transfer mode, half clock
/// and mark, and a serial number in the serial ROM.
class CZELDevicePropertyImplWOM : public PipeCameraProperty {
 public:
  HRESULT SetFpgaRegister(LONG address, LONG value) override;
  HRESULT GetFpgaRegister(LONG address, LONG* value) override;
  HRESULT SetHalfClock(LONG value) override;   ///< 0..5; anything else becomes 0
  HRESULT GetHalfClock(LONG* value) override;  ///< the stored value when the camera does not answer
  HRESULT GetMark(LONG* mark) override;        ///< untouched, with S_OK, when the camera does not answer
  HRESULT SetSerialNum(unsigned char* text) override;  ///< 8 characters
  HRESULT GetSerialNum(unsigned char* text) override;  ///< 8 characters and a zero
  HRESULT ApplyColorMatrix() override;
};

}  // namespace zel
