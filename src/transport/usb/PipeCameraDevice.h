#pragma once

#include <string>

#include "device/CZELDeviceImpl.h"
#include "transport/DeviceClaim.h"
#include "transport/usb/CUsbDevice.h"
#include "transport/usb/UsbPackets.h"

namespace zel {

/// What all cameras behind the USB camera driver share on the device side: presence, open with camera reset,
/// close, and the two steps of reading a frame. The property object talks through a handle of its own, so
/// that settings never wait for a frame.
class PipeCameraDevice : public CZELDeviceImpl {
 public:
  LONG IsSataCamera() override { return 0; }
  LONG GetMaxCameraNum() override;
  /// 0 without touching the driver when an object of this process has that camera open. The out parameters of
  /// both probes receive the result, too; they may be null.
  LONG IsCameraValid(LONG index, LONG* valid) override;
  LONG IsCameraConnected(LONG* connected) override;

  LONG OpenDevice() override;
  LONG CloseDevice(LONG index) override;
  LONG EndCapture() override { return 1; }
  void AbortTransfer() override;
  void ProcessFrame(unsigned char* raw) override;

  /// Path of the device that was opened last, empty before.
  const std::u16string& DevicePath() const { return devicePath_; }

 protected:
  /// First half of every capture preparation: the property side, three buffers and the sizes of the image
  /// object, all from `geometry_`. False when any of it fails.
  bool PrepareBuffers(int bytesPerSample);
  /// Starts a frame and reads all of it, `pixels` samples of one or two bytes; 1 when everything came.
  LONG ReadTransfer(unsigned char* buffer, LONG pixels, UsbTransferKind kind);
  bool Send(UsbPacket packet) { return SendPacket(usb_, packet); }

 private:
  bool Connect();
  bool Answers(LONG index);

  std::u16string devicePath_;
  CUsbDevice usb_;
  DeviceClaim claim_;
};

}  // namespace zel
