#include "transport/usb3/CZELDeviceImplUSB3.h"

#include "property/OutParameter.h"
#include "transport/DriverPath.h"
#include "transport/usb3/CZELDevicePropertyImplUSB3.h"
#include "transport/usb3/DiskSectors.h"

namespace zel {
namespace {

constexpr LONG kPhysicalDrives = 6;  ///< that applications look through

bool Answers(LONG drive) {
  SectorDevice probe;
  return IsDriverIndex(drive) && probe.Open(DiskPath(drive));
}

/// False once in the life of the process, for the frame that the cameras held since they were plugged in.
bool IsWanted() {
  static std::atomic_flag discarded;
  return discarded.test_and_set();
}

}  // namespace

LONG CZELDeviceImplUSB3::GetMaxCameraNum() {
  return kPhysicalDrives;
}

LONG CZELDeviceImplUSB3::IsCameraValid(LONG index, LONG* valid) {
  const LONG result = IsDeviceFree(GetCameraType(), index) && Answers(index);
  Put(valid, result);
  return result;
}

LONG CZELDeviceImplUSB3::IsCameraConnected(LONG* connected) {
  const LONG result = Answers(GetCameraIndex());
  Put(connected, result);
  return result;
}

LONG CZELDeviceImplUSB3::OpenDevice() {
  CloseDevice(GetCameraIndex());
  if (Connect()) return 1;
  CloseDevice(GetCameraIndex());
  return 0;
}

bool CZELDeviceImplUSB3::Connect() {
  const LONG drive = GetCameraIndex();
  if (!claim_.Take(GetCameraType(), drive)) return false;
  if (PropertyStore().AttachDevice(this) != S_OK) return false;
  return PropertyStore().InitializeCamera() != 0 && disk_.Open(DiskPath(drive));
}

LONG CZELDeviceImplUSB3::CloseDevice(LONG) {
  PropertyStore().DetachDevice();
  disk_.Close();
  claim_.Release();
  return 1;
}

void CZELDeviceImplUSB3::ForgetPreparation() {
  frameBytes_ = 0;
  geometry_ = {};
}

LONG CZELDeviceImplUSB3::PrepareCapture() {
  // After a failure nothing may be read into buffers that were never made.
  ForgetPreparation();
  auto* const property = dynamic_cast<CZELDevicePropertyImplUSB3*>(&PropertyStore());
  if (property == nullptr || property->ApplyColorMatrix() != S_OK) return 0;
  LONG width = 0;
  LONG height = 0;
  property->GetROI(nullptr, nullptr, &width, &height);
  return PrepareFrames(width, height, property->FrameBytes());
}

LONG CZELDeviceImplUSB3::PrepareFrames(LONG width, LONG height, LONG bytes) {
  if (!AllocateRawBuffers(bytes)) return 0;
  geometry_ = {.transferPixels = bytes,
               .headerPixels = 0,
               .width = width,
               .height = height,
               .sourceWidth = width,
               .sourceHeight = height};
  UseOneByteSamples();
  ApplyFrameGeometry();
  frameBytes_ = bytes;
  return 1;
}

LONG CZELDeviceImplUSB3::EndCapture() {
  return PropertyStore().OnCaptureStopped();
}

LONG CZELDeviceImplUSB3::ReadFrame(unsigned char* buffer) {
  const auto bytes = static_cast<std::size_t>(frameBytes_);
  if (buffer == nullptr || bytes == 0) return 0;
  if (!ReadDiskStatus(disk_, status_) || status_[kDiskFrameReady] != 1) return 0;
  const DriverResult read = disk_.ReadAt(kDiskImagePosition, {buffer, bytes});
  return read.ok && NoteReceived(read.bytes, bytes) && IsWanted();
}

void CZELDeviceImplUSB3::ProcessFrame(unsigned char* raw) {
  DeliverFrame(raw, 0, kEventFrameProcessed);
}

}  // namespace zel
