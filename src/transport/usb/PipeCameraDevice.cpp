#include "transport/usb/PipeCameraDevice.h"

#include <algorithm>

#include "property/CZELDevicePropertyImpl.h"
#include "property/OutParameter.h"
#include "transport/DriverPath.h"

namespace zel {

LONG PipeCameraDevice::GetMaxCameraNum() {
  return kDeviceIndexes;
}

LONG PipeCameraDevice::IsCameraValid(LONG index, LONG* valid) {
  const LONG result = IsDriverIndex(index) && IsDeviceFree(GetCameraType(), index) && Answers(index);
  Put(valid, result);
  return result;
}

LONG PipeCameraDevice::IsCameraConnected(LONG* connected) {
  const LONG result = Answers(GetCameraIndex());
  Put(connected, result);
  return result;
}

LONG PipeCameraDevice::OpenDevice() {
  CloseDevice(GetCameraIndex());
  if (!IsDriverIndex(GetCameraIndex()) || !claim_.Take(GetCameraType(), GetCameraIndex())) return 0;
  try {
    if (!Connect()) {
      CloseDevice(GetCameraIndex());
      return 0;
    }
  } catch (...) {
    // The user is told, and the camera stays open: it may answer after being plugged in again.
    CurrentDriverHost().ShowMessage(kResetFailed);
  }
  return 1;
}

bool PipeCameraDevice::Connect() {
  devicePath_ = DriverPath(GetDriverName(), GetCameraIndex());
  if (!usb_.Open(devicePath_)) return false;
  // A camera that missed the reset may still answer; what follows shows it.
  Send(MakePacket(UsbCommand::Reset));
  return PropertyStore().AttachDevice(this) == S_OK && PropertyStore().InitializeCamera() != 0;
}

LONG PipeCameraDevice::CloseDevice(LONG) {
  usb_.Close();
  PropertyStore().DetachDevice();
  claim_.Release();
  return 1;
}

void PipeCameraDevice::AbortTransfer() {
  PropertyStore().AbortTransfer();
}

void PipeCameraDevice::ProcessFrame(unsigned char* raw) {
  const auto headerPixels = static_cast<std::size_t>(std::max<LONG>(geometry_.headerPixels, 0));
  DeliverFrame(raw, headerPixels * (IsEightBitTransfer() ? 1 : 2), kEventFrameProcessed);
}

bool PipeCameraDevice::PrepareBuffers(int bytesPerSample) {
  if (PropertyStore().ApplyColorMatrix() != S_OK) return false;
  if (geometry_.transferPixels <= 0) return false;
  // Low windows make transfers that end before the picture does; its last rows then stay black.
  const std::int64_t picture =
      geometry_.headerPixels + std::int64_t{geometry_.sourceWidth} * geometry_.sourceHeight;
  if (!AllocateRawBuffers(bytesPerSample * std::max<std::int64_t>(geometry_.transferPixels, picture)))
    return false;
  ApplyFrameGeometry();
  return true;
}

LONG PipeCameraDevice::ReadTransfer(unsigned char* buffer, LONG pixels, UsbTransferKind kind) {
  if (buffer == nullptr || pixels <= 0) return 0;
  // The start packet travels with the receive code and the image with the send code, the reverse of commands.
  UsbPacket start = MakePacket(UsbCommand::StartFrame);
  std::uint32_t moved = 0;
  if (!usb_.BulkTransfer(UsbTransferKind::Plain, UsbPipe::Command, start, &moved, false)) return 0;
  if (moved != start.size()) return 0;
  const std::size_t bytes = static_cast<std::size_t>(pixels) * (IsEightBitTransfer() ? 1 : 2);
  return usb_.BulkTransfer(kind, UsbPipe::Image, {buffer, bytes}, &moved, true) && NoteReceived(moved, bytes);
}

bool PipeCameraDevice::Answers(LONG index) {
  CUsbDevice probe;
  return IsDriverIndex(index) && probe.Open(DriverPath(GetDriverName(), index));
}

}  // namespace zel
