#pragma once

#include <atomic>

#include "device/CZELDeviceImpl.h"
#include "transport/DeviceClaim.h"
#include "transport/SectorDevice.h"

namespace zel {

/// Device base of the USB 3.0 cameras that look like disks; the camera's index is the number of its drive.
/// Pictures have one byte per sample whatever the transfer mode: the protocol has no other.
class CZELDeviceImplUSB3 : public CZELDeviceImpl {
 public:
  LONG IsSataCamera() override { return 0; }
  LONG GetMaxCameraNum() override;
  /// 1 for every drive that can be opened and is not a camera that this process has open; 0 without touching
  /// the drive for the latter. Which type it is says `IdentifyDiskCamera`. The out parameters of both probes
  /// receive the result, too; they may be null.
  LONG IsCameraValid(LONG index, LONG* valid) override;
  LONG IsCameraConnected(LONG* connected) override;
  /// The identification value of the camera that was opened last, 0..65535; 0 before.
  LONG GetCameraID() override { return identity_; }
  void SetIdentity(LONG value) { identity_ = value; }

  LONG OpenDevice() override;
  LONG CloseDevice(LONG index) override;
  /// The picture has the size that the property's `GetROI` gives.
  LONG PrepareCapture() override;
  LONG EndCapture() override;
  /// 0 also while no frame is ready, and for the first frame that this process reads.
  LONG ReadFrame(unsigned char* buffer) override;
  void ProcessFrame(unsigned char* raw) override;

 protected:
  /// Frames can't be read any more, until the next preparation.
  void ForgetPreparation();
  /// The last step of a preparation: buffers and sizes for pictures that take so many bytes on the drive.
  LONG PrepareFrames(LONG width, LONG height, LONG bytes);

 private:
  bool Connect();

  SectorDevice disk_;
  Sector status_{};
  std::atomic<LONG> frameBytes_ = 0;  ///< of the capture being run; 0: not prepared
  std::atomic<LONG> identity_ = 0;
  DeviceClaim claim_;
};

}  // namespace zel
