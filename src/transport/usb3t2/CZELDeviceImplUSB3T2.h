#pragma once

#include <atomic>
#include <span>
#include <string>

#include "device/CZELDeviceImpl.h"
#include "transport/DeviceClaim.h"
#include "transport/usb3t2/CFx3Api.h"
#include "transport/usb3t2/FrameHeader.h"

namespace zel {

/// Frame arithmetic of an FX3 model, made in its `PrepareCapture`.
struct Usb3T2Frame {
  LONG frameBytes = 0;  ///< of one transfer: the most that a picture may take
  LONG frameReserved = 0;
  LONG lineBytes = 0;  ///< at a byte per sample
  LONG frameWidth = 0;
  LONG frameHeight = 0;
};

/// Device base of the USB3T2 family: cameras behind an FX3 controller. No handle is held between operations;
/// opening, every frame and every register access opens the controller and closes it again.
class CZELDeviceImplUSB3T2 : public CZELDeviceImpl {
 public:
  LONG IsSataCamera() override { return 0; }
  LONG GetMaxCameraNum() override;
  /// 0 without touching the driver when an object of this process has that camera open. The out parameters of
  /// both probes receive the result, too; they may be null.
  LONG IsCameraValid(LONG index, LONG* valid) override;
  LONG IsCameraConnected(LONG* connected) override;

  LONG OpenDevice() override;
  LONG CloseDevice(LONG index) override;
  LONG PrepareCapture() override;
  LONG EndCapture() override { return 1; }
  LONG ReadFrame(unsigned char* buffer) override;
  void ProcessFrame(unsigned char* raw) override;
  void AbortTransfer() override;

  const Usb3T2Frame& Frame() const { return frame_; }
  /// Name of the device that was opened last, empty before; the controller is found by its index alone.
  const std::u16string& DevicePath() const { return devicePath_; }

  /// Mean brightness that automatic exposure aims at, on the 8-bit scale. Any thread.
  void SetAeTarget(LONG target) { aeTarget_ = target; }
  LONG AeTarget() const { return aeTarget_; }

 protected:
  /// Takes over the sizes of the capture being prepared.
  void SetFrame(const Usb3T2Frame& frame);
  /// Those sizes, for a thread that reads a frame: a read that outlives its capture must not use the next
  /// one's.
  Usb3T2Frame CopyFrame();

 private:
  struct FrameRequest;

  bool Connect();
  bool ProgramFpga();
  bool ReadRequest(FrameRequest& request);
  bool ReadImage(std::span<unsigned char> image);

  std::u16string devicePath_;
  CFx3Api fx3_;  ///< of the thread that opens the device or reads frames
  DeviceClaim claim_;
  Usb3T2Frame frame_;
  std::atomic<LONG> transferBytes_ = 0;  ///< of the prepared capture; 0: nothing can be read
  std::atomic<LONG> aeTarget_ = 120;     ///< a little below half of full scale
};

}  // namespace zel
