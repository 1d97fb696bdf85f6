#include "transport/sata/CZELDeviceImplSATA.h"

#include <algorithm>

#include "property/OutParameter.h"

namespace zel {
namespace {

constexpr LONG kDriveLetters = 26;
constexpr LONG kPackedColor = 4;  // input format
constexpr std::uint32_t kWaitForFrameMs = 16;
constexpr std::uint32_t kAfterChangeMs = 18;
constexpr std::uint32_t kAfterShortReadMs = 8;

bool IsLetter(LONG index) {
  return (index >= 'A' && index <= 'Z') || (index >= 'a' && index <= 'z');
}

}  // namespace

std::u16string SataVolumePath(LONG index) {
  return std::u16string(u"\\\\.\\") + static_cast<char16_t>(index) + u':';
}

LONG CZELDeviceImplSATA::GetMaxCameraNum() {
  return kDriveLetters;
}

LONG CZELDeviceImplSATA::IsCameraValid(LONG, LONG* valid) {
  Put<LONG>(valid, 0);
  return 0;
}

LONG CZELDeviceImplSATA::IsCameraConnected(LONG* connected) {
  SectorDevice probe;
  const LONG result = IsLetter(GetCameraIndex()) && probe.Open(SataVolumePath(GetCameraIndex()));
  Put(connected, result);
  return result;
}

LONG CZELDeviceImplSATA::OpenDevice() {
  CloseDevice(GetCameraIndex());
  auto* const property = dynamic_cast<CZELDevicePropertyImplSATA*>(&PropertyStore());
  if (property == nullptr || !IsLetter(GetCameraIndex())) return 0;
  if (property->AttachDevice(this) != S_OK) {
    CloseDevice(GetCameraIndex());
    return 0;
  }
  sata_ = property;
  return 1;
}

LONG CZELDeviceImplSATA::CloseDevice(LONG) {
  PropertyStore().DetachDevice();
  sata_ = nullptr;
  readBytes_ = 0;
  return 1;
}

LONG CZELDeviceImplSATA::PrepareCapture() {
  ++capture_;
  geometry_ = {};
  if (sata_ == nullptr) return 0;
  const auto turn = sata_->Volume().TakeTurn();
  // After a failure nothing may be read into buffers that were never made.
  readBytes_ = 0;
  if (sata_->ApplyColorMatrix() != S_OK) return 0;
  const SataFrame& frame = sata_->Frame();
  if (!AllocateRawBuffers(frame.totalBytes)) return 0;
  LONG width = 0;
  LONG height = 0;
  sata_->GetROI(nullptr, nullptr, &width, &height);
  const bool packedColor = sata_->Settings().inputFormat == kPackedColor;
  geometry_ = {.transferPixels = frame.alignedWidth * frame.alignedHeight,
               .headerPixels = 0,
               .width = width,
               .height = height,
               .sourceWidth = frame.alignedWidth * (packedColor ? 3 : 1),
               .sourceHeight = frame.alignedHeight};
  ApplyFrameGeometry();
  const SataSectors& sectors = sata_->Sectors();
  areas_ = {SectorPosition(sectors.areaA), SectorPosition(sectors.areaB)};
  nextArea_ = 0;
  expectedPixels_ = width * height;
  readBytes_ = frame.sectorCount * static_cast<LONG>(kSectorBytes);
  return 1;
}

LONG CZELDeviceImplSATA::EndCapture() {
  return PropertyStore().OnCaptureStopped();
}

bool CZELDeviceImplSATA::ReadArea(std::size_t area, unsigned char* buffer) {
  if (buffer == nullptr) return false;
  const DriverResult read =
      sata_->Volume().ReadAt(areas_[area], {buffer, static_cast<std::size_t>(readBytes_)});
  const auto expected = static_cast<std::size_t>(expectedPixels_);
  return read.ok && NoteReceived(std::min<std::size_t>(read.bytes, expected), expected);
}

LONG CZELDeviceImplSATA::ReadFrame(unsigned char* buffer) {
  if (buffer == nullptr || sata_ == nullptr) return 0;
  const bool changed = sata_->HasPendingChanges();
  if (changed) sata_->ApplyPendingChanges();
  const auto turn = sata_->Volume().TakeTurn();
  if (readBytes_ <= 0) return 0;
  // What comes after a change was exposed in part by the old settings.
  const bool whole = ReadArea(nextArea_, changed ? SpareRawBuffer() : buffer);
  if (whole || changed) nextArea_ ^= 1;
  if (whole && !changed) return 1;
  CurrentDriverHost().Sleep(changed ? kAfterChangeMs : kAfterShortReadMs);
  return kReadWithoutFrame;
}

LONG CZELDeviceImplSATA::ReadFrameAlt(unsigned char* buffer) {
  if (buffer == nullptr || sata_ == nullptr) return 0;
  const std::uint32_t capture = capture_;
  if (sata_->HasPendingChanges()) sata_->ApplyPendingChanges();
  LONG timeout = 3000;
  sata_->GetTimeout(&timeout);
  const auto limit = static_cast<std::uint32_t>(timeout);  // -1 waits as long as the capture lasts
  DriverHost& host = CurrentDriverHost();
  const std::uint64_t start = host.Milliseconds();
  while (host.Milliseconds() - start < limit && capture == capture_ && capture != aborted_) {
    if (ReadAnnounced(buffer)) return 1;
    host.Sleep(kWaitForFrameMs);
  }
  return 0;
}

bool CZELDeviceImplSATA::ReadAnnounced(unsigned char* buffer) {
  const auto turn = sata_->Volume().TakeTurn();
  if (readBytes_ <= 0) return false;
  if (!sata_->Volume().ReadSectorAt(SectorPosition(sata_->Sectors().command), status_)) return false;
  const SataReady ready = FrameReady(status_);
  if (ready == SataReady::None) return false;
  const bool whole = ReadArea(ready == SataReady::AreaA ? 0 : 1, buffer);
  ClearFrameReady(status_);
  return whole;
}

void CZELDeviceImplSATA::ProcessFrame(unsigned char* raw) {
  DeliverFrame(raw, 0, kEventFrameProcessed);
}

}  // namespace zel
