#pragma once

#include "transport/usb/PipeCameraDevice.h"

namespace zel {

/// Frame arithmetic of a USB 2.0 model, made in its `PrepareCapture`.
struct UsbFrame {
  LONG frameClocks = 0;  ///< pixel clocks of one frame with blanking, a multiple of 1024
  LONG frameExtra = 0;   ///< the constant part of them
  LONG lineLength = 0;   ///< pixel clocks of one line
  LONG roiWidth = 0;     ///< window of the running capture, in pixels
  LONG roiHeight = 0;
  LONG expectedBytes = 0;   ///< of one frame at a byte per sample, a multiple of 1024
  bool useAltRead = false;  ///< read frames with the driver's alternative transfer
};

/// Device base of the USB 2.0 family.
class CZELDeviceImplUSB : public PipeCameraDevice {
 public:
  LONG PrepareCapture() override;
  LONG ReadFrame(unsigned char* buffer) override;

  const UsbFrame& Frame() const { return frame_; }

 protected:
  UsbTransferKind ReadKind() const {
    return frame_.useAltRead ? UsbTransferKind::Alternative : UsbTransferKind::Plain;
  }

  UsbFrame frame_;
};

}  // namespace zel
