#include "transport/wom/CZELDevicePropertyImplWOM.h"

#include "common/BytePacking.h"
#include "property/OutParameter.h"
#include "transport/wom/WomFpga.h"

namespace zel {
namespace {

constexpr LONG kHighestHalfClock = 5;

constexpr std::uint16_t kSerialNumberStart = 0x1FF7;  // in the serial ROM
constexpr std::uint16_t kSerialNumberBytes = 8;
constexpr std::uint32_t kRomWriteMs = 10;  // until the ROM takes the next byte

}  // namespace

HRESULT CZELDevicePropertyImplWOM::SetFpgaRegister(LONG address, LONG value) {
  return Send(FpgaWritePacket(ByteOf(address, 0), ByteOf(value, 0))) ? S_OK : E_FAIL;
}

HRESULT CZELDevicePropertyImplWOM::GetFpgaRegister(LONG address, LONG* value) {
  if (!Query(FpgaReadPacket(ByteOf(address, 0)))) return E_FAIL;
  Put<LONG>(value, Reply()[0]);
  return S_OK;
}

HRESULT CZELDevicePropertyImplWOM::SetHalfClock(LONG value) {
  if (!IsAttached()) return E_FAIL;
  if (value < 0 || value > kHighestHalfClock) value = 0;
  if (SUCCEEDED(SetFpgaRegister(kWomHalfClock, value))) {
    // The new clock restarts the sensor, which then wants its set-up again.
    InitializeCamera();
    ApplyColorMatrix();
  }
  return CZELDevicePropertyImpl::SetHalfClock(value);
}

HRESULT CZELDevicePropertyImplWOM::GetHalfClock(LONG* value) {
  if (!IsAttached()) return E_FAIL;
  LONG found = 0;
  if (SUCCEEDED(GetFpgaRegister(kWomHalfClock, &found))) Edit(kHalfClock).current = found;
  Put(value, Record(kHalfClock).current);
  return S_OK;
}

HRESULT CZELDevicePropertyImplWOM::GetMark(LONG* mark) {
  if (!IsAttached()) return E_FAIL;
  GetFpgaRegister(kWomMark, mark);
  return S_OK;
}

HRESULT CZELDevicePropertyImplWOM::SetSerialNum(unsigned char* text) {
  if (!IsAttached() || text == nullptr) return E_FAIL;
  for (std::uint16_t n = 0; n < kSerialNumberBytes; ++n) {
    const auto address = static_cast<std::uint16_t>(kSerialNumberStart + n);
    if (!Send(WideSerialRomWritePacket(address, text[n]))) return E_FAIL;
    CurrentDriverHost().Sleep(kRomWriteMs);
  }
  return S_OK;
}

HRESULT CZELDevicePropertyImplWOM::GetSerialNum(unsigned char* text) {
  if (!IsAttached() || text == nullptr) return E_FAIL;
  for (std::uint16_t n = 0; n < kSerialNumberBytes; ++n) {
    if (!Query(WideSerialRomReadPacket(static_cast<std::uint16_t>(kSerialNumberStart + n)))) return E_FAIL;
    text[n] = Reply()[0];
  }
  text[kSerialNumberBytes] = 0;
  return S_OK;
}

HRESULT CZELDevicePropertyImplWOM::ApplyColorMatrix() {
  NormaliseTransferMode();
  if (IsAttached()) {
    // The controller always passes samples on as they are; the FPGA makes the mode.
    if (!Send(TransferModePacket(true))) return E_FAIL;
    if (FAILED(SetFpgaRegister(kWomTransferMode, settings_.transferMode != 0))) return E_FAIL;
  }
  return CZELDevicePropertyImpl::ApplyColorMatrix();
}

}  // namespace zel
