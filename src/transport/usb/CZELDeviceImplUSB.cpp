#include "transport/usb/CZELDeviceImplUSB.h"

namespace zel {

LONG CZELDeviceImplUSB::PrepareCapture() {
  // Room for two bytes per sample in either mode: the mode may change between preparation and reading.
  if (!PrepareBuffers(2)) return 0;
  return Send(FrameSizePacket(static_cast<std::uint32_t>(geometry_.transferPixels)));
}

LONG CZELDeviceImplUSB::ReadFrame(unsigned char* buffer) {
  return ReadTransfer(buffer, geometry_.transferPixels, ReadKind());
}

}  // namespace zel
