#pragma once

#include "transport/usb/PipeCameraDevice.h"

namespace zel {

/// Frame arithmetic of a WOM model, made in its `PrepareCapture`.
struct WomFrame {
  LONG expectedBytes = 0;  ///< of one frame at a byte per sample, a multiple of 2048
  LONG frameExtra = 0;     ///< always 0 here
  LONG lineBytes = 0;
  LONG roiWidth = 0;  ///< window of the running capture, in pixels
  LONG roiHeight = 0;
};

/// Device base of the WOM family: USB 2.0 cameras whose FPGA knows the frame's size.
class CZELDeviceImplWOM : public PipeCameraDevice {
 public:
  LONG PrepareCapture() override;
  LONG ReadFrame(unsigned char* buffer) override;

  const WomFrame& Frame() const { return frame_; }

 protected:
  WomFrame frame_;
};

}  // namespace zel
