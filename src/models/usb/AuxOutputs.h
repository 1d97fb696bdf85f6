#pragma once

#include "models/usb/UsbProperty.h"

namespace zel {

/// The I/O port of a USB 2.0 camera: inputs are read in bits 0 and 1, outputs written in bits 2 and 3.
struct AuxLine {
  LONG input;
  LONG output;
  LONG offMask;  ///< what the port keeps of the lines when the output goes off
};
constexpr AuxLine kAuxLine3{.input = 0x1, .output = 0x4, .offMask = 0xB};
constexpr AuxLine kAuxLine4{.input = 0x2, .output = 0x8, .offMask = 0x7};

/// Switches one output and leaves the other as the plug shows it.
inline HRESULT SetAuxLine(CZELDeviceProperty& camera, const AuxLine& line, LONG on) {
  LONG port = 0;
  if (FAILED(camera.GetIO(&port))) return E_FAIL;
  port <<= 2;
  port = on != 0 ? port | line.output : port & line.offMask;
  return FAILED(camera.SetIO(port)) ? E_FAIL : S_OK;
}

/// 1 while the line's input is high.
inline HRESULT GetAuxLine(CZELDeviceProperty& camera, const AuxLine& line, LONG* on) {
  LONG port = 0;
  if (FAILED(camera.GetIO(&port))) return E_FAIL;
  Put<LONG>(on, (port & line.input) != 0);
  return S_OK;
}

}  // namespace zel
