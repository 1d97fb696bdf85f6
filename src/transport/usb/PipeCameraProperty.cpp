#include "transport/usb/PipeCameraProperty.h"

#include <algorithm>

#include "common/BytePacking.h"
#include "property/OutParameter.h"
#include "transport/usb/PipeCameraDevice.h"

namespace zel {
namespace {

constexpr std::uint32_t kPortSettleMs = 30;

constexpr LONG kSerialRomIdBytes = 8;
constexpr LONG kSerialRomIdStart = 8;

/// What the controller's boot header holds at serial-ROM addresses 1 to 4 before its identity is changed:
/// vendor 0x12C1, product 0x02C0, low bytes first.
constexpr std::uint8_t kBootHeader[] = {0xC1, 0x12, 0xC0, 0x02};
constexpr std::uint8_t kBootHeaderStart = 1;
constexpr std::uint8_t kProductIdLow = 3;
constexpr std::uint8_t kNewProductIdLow = 0x48;

constexpr HRESULT Outcome(bool done) {
  return done ? S_OK : E_FAIL;
}

void Note(DriverHost::RegisterAccess access, std::uint32_t address, std::uint32_t value) {
  CurrentDriverHost().NoteRegister(access, address, value);
}

}  // namespace

HRESULT PipeCameraProperty::SetRegister(LONG address, LONG value) {
  const auto address8 = ByteOf(address, 0);
  const auto value16 = static_cast<std::uint16_t>(value);
  return WriteRegister(RegisterWritePacket(address8, value16), address8, value16);
}

HRESULT PipeCameraProperty::GetRegister(LONG address, LONG* value) {
  const auto address8 = ByteOf(address, 0);
  return ReadRegister(RegisterReadPacket(address8), address8, value);
}

HRESULT PipeCameraProperty::SetWideRegister(LONG address, LONG value) {
  const auto address16 = static_cast<std::uint16_t>(address);
  const auto value16 = static_cast<std::uint16_t>(value);
  return WriteRegister(WideRegisterWritePacket(address16, value16), address16, value16);
}

HRESULT PipeCameraProperty::GetWideRegister(LONG address, LONG* value) {
  const auto address16 = static_cast<std::uint16_t>(address);
  return ReadRegister(WideRegisterReadPacket(address16), address16, value);
}

HRESULT PipeCameraProperty::SetRegisterB(unsigned char address, unsigned char value) {
  if (!IsAttached()) return E_FAIL;
  return WriteRegister(ByteRegisterWritePacket(address, value), address, value);
}

HRESULT PipeCameraProperty::GetRegisterB(unsigned char address, LONG* value) {
  if (!IsAttached()) return E_FAIL;
  std::uint8_t byte = 0;
  if (!ReadRegisterBytes(address, {&byte, 1})) return E_FAIL;
  Put<LONG>(value, byte);
  Note(DriverHost::RegisterAccess::Read, address, byte);
  return S_OK;
}

HRESULT PipeCameraProperty::SetIO(LONG value) {
  return Outcome(Send(PortPacket(static_cast<std::uint32_t>(value))));
}

HRESULT PipeCameraProperty::GetIO(LONG* value) {
  if (!Query(MakePacket(UsbCommand::GetPort), kPortSettleMs)) return E_FAIL;
  Put<LONG>(value, (Reply()[0] & 0x18) >> 3);
  return S_OK;
}

HRESULT PipeCameraProperty::SetSROMRegister(LONG address, LONG value) {
  return Outcome(WriteSerialRom(ByteOf(address, 0), ByteOf(value, 0)));
}

HRESULT PipeCameraProperty::GetSROMRegister(LONG address, LONG* value) {
  std::uint8_t byte = 0;
  if (!ReadSerialRom(ByteOf(address, 0), &byte)) return E_FAIL;
  Put<LONG>(value, byte);
  return S_OK;
}

HRESULT PipeCameraProperty::SetSROMID(LONG address, LONG value) {
  if (address < 0 || address >= kSerialRomIdBytes) return S_OK;
  return PipeCameraProperty::SetSROMRegister(address + kSerialRomIdStart, value);
}

HRESULT PipeCameraProperty::GetSROMID(LONG address, LONG* value) {
  if (address < 0 || address >= kSerialRomIdBytes) return S_OK;
  return PipeCameraProperty::GetSROMRegister(address + kSerialRomIdStart, value);
}

HRESULT PipeCameraProperty::ChangePIDtoDS() {
  std::uint8_t address = kBootHeaderStart;
  for (const std::uint8_t expected : kBootHeader) {
    std::uint8_t found = 0;
    if (!ReadSerialRom(address++, &found) || found != expected) return E_FAIL;
  }
  return Outcome(WriteSerialRom(kProductIdLow, kNewProductIdLow));
}

HRESULT PipeCameraProperty::SetTimeout(LONG milliseconds) {
  CZELDevicePropertyImpl::SetTimeout(milliseconds);
  if (!IsAttached()) return E_FAIL;
  return Outcome(usb_.SetDriverTimeout(milliseconds));
}

HRESULT PipeCameraProperty::SetTransMode(LONG mode) {
  if (mode < 0) return E_INVALIDARG;
  settings_.transferMode = mode;
  if (!IsAttached()) return S_OK;
  return Outcome(Send(TransferModePacket(mode != 0)));
}

HRESULT PipeCameraProperty::SetModelOption(const unsigned char* data, LONG length) {
  if (length < 0 || length > static_cast<LONG>(kMaxBlockBytes)) return E_INVALIDARG;
  if (data == nullptr && length != 0) return E_INVALIDARG;
  PutBlock(packet_, {data, static_cast<std::size_t>(length)});
  return Outcome(SendPacket(usb_, packet_));
}

HRESULT PipeCameraProperty::AttachDevice(CZELDevice* device) {
  CZELDevicePropertyImpl::AttachDevice(device);
  const auto* camera = dynamic_cast<const PipeCameraDevice*>(device);
  if (camera != nullptr) {
    usb_.Open(camera->DevicePath());
  } else {
    usb_.Close();
  }
  return S_OK;
}

HRESULT PipeCameraProperty::DetachDevice() {
  usb_.Close();
  return CZELDevicePropertyImpl::DetachDevice();
}

bool PipeCameraProperty::WriteRegisterBytes(std::span<const std::uint8_t> data) {
  return !data.empty() && Send(MakePacket(UsbCommand::RegisterWrite, data));
}

bool PipeCameraProperty::ReadRegisterBytes(std::uint8_t address, std::span<std::uint8_t> out) {
  if (out.empty() || !Query(RegisterReadPacket(address))) return false;
  std::copy_n(Reply().begin(), std::min(out.size(), Reply().size()), out.begin());
  return true;
}

bool PipeCameraProperty::WriteSerialRom(std::uint8_t address, std::uint8_t value) {
  return Send(SerialRomWritePacket(address, value));
}

bool PipeCameraProperty::ReadSerialRom(std::uint8_t address, std::uint8_t* value) {
  if (!Query(SerialRomReadPacket(address))) return false;
  *value = Reply()[0];
  return true;
}

bool PipeCameraProperty::Send(const UsbPacket& packet) {
  packet_ = packet;
  return SendPacket(usb_, packet_);
}

bool PipeCameraProperty::Query(const UsbPacket& packet, std::uint32_t settleMs) {
  packet_ = packet;
  return QueryPacket(usb_, packet_, settleMs);
}

void PipeCameraProperty::NormaliseTransferMode() {
  settings_.transferMode = std::max<LONG>(settings_.transferMode, 0);
}

HRESULT PipeCameraProperty::WriteRegister(const UsbPacket& packet, std::uint32_t address,
                                          std::uint32_t value) {
  if (!Send(packet)) return E_FAIL;
  Note(DriverHost::RegisterAccess::Write, address, value);
  return S_OK;
}

HRESULT PipeCameraProperty::ReadRegister(const UsbPacket& packet, std::uint32_t address, LONG* value) {
  if (!Query(packet)) return E_FAIL;
  const std::uint16_t found = FromBytes16(Reply()[1], Reply()[0]);
  Put<LONG>(value, found);
  Note(DriverHost::RegisterAccess::Read, address, found);
  return S_OK;
}

}  // namespace zel
