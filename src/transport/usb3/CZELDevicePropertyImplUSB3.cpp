#include "transport/usb3/CZELDevicePropertyImplUSB3.h"

#include <limits>

#include "common/BytePacking.h"
#include "property/OutParameter.h"
#include "transport/usb3/CZELDeviceImplUSB3.h"
#include "transport/usb3/DiskIdentification.h"

namespace zel {
namespace {

constexpr std::uint32_t kPrepareMs = 8;

/// Whole sectors of a picture at one byte per pixel; 0 for sizes that can't be read.
LONG FrameBytesOf(LONG width, LONG height) {
  if (width <= 0 || height <= 0) return 0;
  const std::int64_t bytes = RoundUp<std::int64_t>(std::int64_t{width} * height, kSectorBytes);
  return bytes <= std::numeric_limits<LONG>::max() ? static_cast<LONG>(bytes) : 0;
}

}  // namespace

HRESULT CZELDevicePropertyImplUSB3::SetRegister(LONG address, LONG value) {
  const auto turn = disk_.TakeTurn();
  if (!disk_.IsOpen()) return E_HANDLE;
  const auto high = static_cast<std::uint16_t>(address);
  const auto low = static_cast<std::uint16_t>(address + 1);
  for (const auto& [at, byte] : {std::pair(high, ByteOf(value, 1)), std::pair(low, ByteOf(value, 0))}) {
    if (!Send(DiskCommand::RegisterWrite, {ByteOf(at, 1), ByteOf(at, 0), byte})) return E_FAIL;
  }
  CurrentDriverHost().NoteRegister(DriverHost::RegisterAccess::Write, high,
                                   static_cast<std::uint16_t>(value));
  return S_OK;
}

HRESULT CZELDevicePropertyImplUSB3::GetRegister(LONG address, LONG* value) {
  const auto turn = disk_.TakeTurn();
  if (!disk_.IsOpen()) return E_HANDLE;
  std::uint8_t high = 0;
  std::uint8_t low = 0;
  if (!ReadByte(static_cast<std::uint16_t>(address), &high)) return E_FAIL;
  if (!ReadByte(static_cast<std::uint16_t>(address + 1), &low)) return E_FAIL;
  const std::uint16_t found = FromBytes16(low, high);
  Put<LONG>(value, found);
  CurrentDriverHost().NoteRegister(DriverHost::RegisterAccess::Read, static_cast<std::uint16_t>(address),
                                   found);
  return S_OK;
}

HRESULT CZELDevicePropertyImplUSB3::AttachDevice(CZELDevice* device) {
  CZELDevicePropertyImpl::AttachDevice(device);
  if (device == nullptr || !disk_.Open(DiskPath(device->GetCameraIndex()))) return E_INVALIDARG;
  if (Identify()) return S_OK;
  disk_.Close();
  return E_INVALIDARG;
}

bool CZELDevicePropertyImplUSB3::Identify() {
  const auto turn = disk_.TakeTurn();
  if (!ReadDiskStatus(disk_, sector_) || !HasDiskSignature(sector_)) return false;
  if (auto* const camera = dynamic_cast<CZELDeviceImplUSB3*>(Device()))
    camera->SetIdentity(FromBytes16(sector_[kDiskIdentityLow], sector_[kDiskIdentityHigh]));
  return DiskCameraType(sector_) == Device()->GetCameraType();
}

HRESULT CZELDevicePropertyImplUSB3::DetachDevice() {
  disk_.Close();
  return CZELDevicePropertyImpl::DetachDevice();
}

HRESULT CZELDevicePropertyImplUSB3::ApplyColorMatrix() {
  frameBytes_ = 0;
  if (!IsAttached() || !disk_.IsOpen()) return E_HANDLE;
  if (!Send(DiskCommand::PrepareCapture, {})) return E_FAIL;
  LONG width = 0;
  LONG height = 0;
  GetROI(nullptr, nullptr, &width, &height);
  frameBytes_ = FrameBytesOf(width, height);
  CurrentDriverHost().Sleep(kPrepareMs);
  // A camera that does not take them again may still send frames.
  SetDigitalGlobalGain(Record(kDigitalGlobalGain).current);
  SetShutter(Record(kShutter).current);
  return CZELDevicePropertyImpl::ApplyColorMatrix();
}

bool CZELDevicePropertyImplUSB3::Send(DiskCommand command, std::initializer_list<std::uint8_t> arguments) {
  const auto turn = disk_.TakeTurn();
  sector_ = DiskCommandSector(command, arguments);
  if (disk_.WriteSectorAt(kDiskCommandPosition, sector_)) return true;
  auto* const camera = dynamic_cast<CZELDeviceImplUSB3*>(Device());
  const std::string refusal = disk_.WriteRefusal();
  if (camera != nullptr && !refusal.empty())
    camera->Trouble().Note(CameraTrouble::Kind::WriteRefused, refusal);
  return false;
}

bool CZELDevicePropertyImplUSB3::ReadByte(std::uint16_t address, std::uint8_t* value) {
  if (!Send(DiskCommand::RegisterRead, {ByteOf(address, 1), ByteOf(address, 0)})) return false;
  if (!ReadDiskStatus(disk_, sector_)) return false;
  *value = sector_[kDiskReadBack];
  return true;
}

}  // namespace zel
