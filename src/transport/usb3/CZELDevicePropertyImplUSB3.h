#pragma once

#include "property/CZELDevicePropertyImpl.h"
#include "transport/usb3/DiskSectors.h"

namespace zel {

/// The settings traffic of a disk-style camera: 16-bit registers, each carried as two commands of one byte.
/// E_HANDLE while no camera is open, E_FAIL for a failed transfer. Uses a handle of its own, so that settings
/// never wait for a frame.
class CZELDevicePropertyImplUSB3 : public CZELDevicePropertyImpl {
 public:
  HRESULT SetRegister(LONG address, LONG value) override;  ///< 16-bit address, 16-bit value
  HRESULT GetRegister(LONG address, LONG* value) override;
  /// E_INVALIDARG, and closed, unless the drive is a camera of the device's own type.
  HRESULT AttachDevice(CZELDevice* device) override;
  HRESULT DetachDevice() override;
  /// Prepares the camera for a capture of the window and sets its gain and shutter again.
  HRESULT ApplyColorMatrix() override;

  /// Of one frame on the drive, whole sectors; 0 before the first preparation.
  LONG FrameBytes() const { return frameBytes_; }

 private:
  bool Send(DiskCommand command, std::initializer_list<std::uint8_t> arguments);
  bool ReadByte(std::uint16_t address, std::uint8_t* value);
  bool Identify();

  Sector sector_{};  ///< the last command sent or status read
  SectorDevice disk_;
  LONG frameBytes_ = 0;
};

}  // namespace zel
