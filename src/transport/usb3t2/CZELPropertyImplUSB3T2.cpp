#include "transport/usb3t2/CZELPropertyImplUSB3T2.h"

#include <algorithm>
#include <array>

#include "common/BytePacking.h"
#include "property/OutParameter.h"
#include "transport/usb3t2/CZELDeviceImplUSB3T2.h"
#include "transport/usb3t2/FpgaRegisters.h"

namespace zel {
namespace {

constexpr std::uint16_t kFpgaBusAddress = 0x40;
constexpr std::uint16_t kSensorBusAddress = 0xBA;

// The focus drive's range; it stands in the middle when the camera is switched on.
constexpr LONG kFocusMaximum = 255;
constexpr LONG kFocusDefault = 128;

}  // namespace

CZELPropertyImplUSB3T2::CZELPropertyImplUSB3T2() {
  Edit(kFocusPosition) = {.minimum = 0,
                          .maximum = kFocusMaximum,
                          .defaultValue = kFocusDefault,
                          .current = kFocusDefault,
                          .supported = 1};
}

// ---- registers

template <class Access>
HRESULT CZELPropertyImplUSB3T2::OnBus(Access access) {
  if (!IsAttached()) return E_FAIL;
  const std::lock_guard turn(busTurn_);
  CFx3Api controller;
  return controller.Open(index_) && access(controller) ? S_OK : E_FAIL;
}

HRESULT CZELPropertyImplUSB3T2::SetRegister(LONG, LONG) {
  return E_NOTIMPL;
}

HRESULT CZELPropertyImplUSB3T2::GetRegister(LONG, LONG*) {
  return E_NOTIMPL;
}

HRESULT CZELPropertyImplUSB3T2::SetFpgaRegister(LONG address, LONG value) {
  const std::array bytes{ByteOf(address, 0), std::uint8_t{0}, ByteOf(value, 0)};
  return OnBus([&](CFx3Api& controller) { return controller.BusWrite(kFpgaBusAddress, bytes); });
}

HRESULT CZELPropertyImplUSB3T2::GetFpgaRegister(LONG address, LONG* value) {
  const std::array bytes{ByteOf(address, 0)};
  std::array<std::uint8_t, 2> reply{};
  const HRESULT result = OnBus([&](CFx3Api& controller) {
    return controller.BusWrite(kFpgaBusAddress, bytes) && controller.BusRead(kFpgaBusAddress, reply);
  });
  if (SUCCEEDED(result)) Put<LONG>(value, reply[1]);
  return result;
}

HRESULT CZELPropertyImplUSB3T2::SetSensorRegister(LONG address, LONG value) {
  const std::array bytes{ByteOf(address, 1), ByteOf(address, 0), ByteOf(value, 1), ByteOf(value, 0)};
  const HRESULT result =
      OnBus([&](CFx3Api& controller) { return controller.BusWrite(kSensorBusAddress, bytes); });
  if (SUCCEEDED(result)) {
    CurrentDriverHost().NoteRegister(DriverHost::RegisterAccess::Write, static_cast<std::uint16_t>(address),
                                     static_cast<std::uint16_t>(value));
  }
  return result;
}

HRESULT CZELPropertyImplUSB3T2::GetSensorRegister(LONG address, LONG* value) {
  const std::array bytes{ByteOf(address, 1), ByteOf(address, 0)};
  std::array<std::uint8_t, 2> reply{};
  const HRESULT result = OnBus([&](CFx3Api& controller) {
    std::uint32_t received = 0;
    // Bits are changed in values that were read: half a reply must not pass for one.
    return controller.BusWrite(kSensorBusAddress, bytes) &&
           controller.BusRead(kSensorBusAddress, reply, &received) && received >= reply.size();
  });
  if (FAILED(result)) return result;
  const std::uint16_t found = FromBytes16(reply[1], reply[0]);
  Put<LONG>(value, found);
  CurrentDriverHost().NoteRegister(DriverHost::RegisterAccess::Read, static_cast<std::uint16_t>(address),
                                   found);
  return S_OK;
}

HRESULT CZELPropertyImplUSB3T2::SetIO(LONG value) {
  return SetFpgaRegister(kFpgaPort, value);
}

HRESULT CZELPropertyImplUSB3T2::GetIO(LONG* value) {
  return GetFpgaRegister(kFpgaPort, value);
}

// ---- settings

HRESULT CZELPropertyImplUSB3T2::SetTransMode(LONG mode) {
  if (mode < 0) return E_INVALIDARG;
  settings_.transferMode = mode;
  return S_OK;
}

HRESULT CZELPropertyImplUSB3T2::GetSerialNum(unsigned char* text) {
  Put<unsigned char>(text, 0);
  return S_OK;
}

HRESULT CZELPropertyImplUSB3T2::SetProperty(LONG id, LONG value) {
  if (id == kFocusPosition) {
    const PropertyRecord& focus = Record(id);
    const bool offered = focus.supported != 0 && value >= focus.minimum && value <= focus.maximum;
    if (offered && FAILED(SetFpgaRegister(kFpgaFocus, value))) return E_FAIL;
  }
  const std::lock_guard turn(storeTurn_);
  return CZELDevicePropertyImpl::SetProperty(id, value);
}

HRESULT CZELPropertyImplUSB3T2::GetPropertyInfo(LONG id, PropertyRecord* record) {
  const std::lock_guard turn(storeTurn_);
  return CZELDevicePropertyImpl::GetPropertyInfo(id, record);
}

HRESULT CZELPropertyImplUSB3T2::GetShutter(LONG* value) {
  const std::lock_guard turn(storeTurn_);
  return CZELDevicePropertyImpl::GetShutter(value);
}

HRESULT CZELPropertyImplUSB3T2::GetDigitalGlobalGain(LONG* value) {
  const std::lock_guard turn(storeTurn_);
  return CZELDevicePropertyImpl::GetDigitalGlobalGain(value);
}

HRESULT CZELPropertyImplUSB3T2::SetAuxValue3(LONG on) {
  const std::lock_guard turn(storeTurn_);
  return CZELDevicePropertyImpl::SetAuxValue3(on);
}

HRESULT CZELPropertyImplUSB3T2::GetAuxValue3(LONG* on) {
  const std::lock_guard turn(storeTurn_);
  return CZELDevicePropertyImpl::GetAuxValue3(on);
}

HRESULT CZELPropertyImplUSB3T2::SetAuxValue4(LONG on) {
  const std::lock_guard turn(storeTurn_);
  return CZELDevicePropertyImpl::SetAuxValue4(on);
}

HRESULT CZELPropertyImplUSB3T2::GetAuxValue4(LONG* on) {
  const std::lock_guard turn(storeTurn_);
  return CZELDevicePropertyImpl::GetAuxValue4(on);
}

void CZELPropertyImplUSB3T2::StoreCurrent(LONG id, LONG value) {
  const std::lock_guard turn(storeTurn_);
  Edit(id).current = value;
}

// ---- with the device

HRESULT CZELPropertyImplUSB3T2::SetAeTarget(LONG target) {
  auto* const camera = dynamic_cast<CZELDeviceImplUSB3T2*>(Device());
  if (camera == nullptr) return E_HANDLE;
  camera->SetAeTarget(target);
  return S_OK;
}

HRESULT CZELPropertyImplUSB3T2::GetAeTarget(LONG* target) {
  const auto* const camera = dynamic_cast<const CZELDeviceImplUSB3T2*>(Device());
  if (camera == nullptr) return E_HANDLE;
  Put(target, camera->AeTarget());
  return S_OK;
}

HRESULT CZELPropertyImplUSB3T2::AttachDevice(CZELDevice* device) {
  const HRESULT result = CZELDevicePropertyImpl::AttachDevice(device);
  if (device != nullptr) index_ = device->GetCameraIndex();
  return result;
}

HRESULT CZELPropertyImplUSB3T2::ApplyColorMatrix() {
  settings_.transferMode = std::max<LONG>(settings_.transferMode, 0);
  if (IsAttached()) {
    const HRESULT result = SetFpgaRegister(kFpgaBytesPerSample, settings_.transferMode == 1 ? 2 : 1);
    if (FAILED(result)) return result;
  }
  return CZELDevicePropertyImpl::ApplyColorMatrix();
}

}  // namespace zel
