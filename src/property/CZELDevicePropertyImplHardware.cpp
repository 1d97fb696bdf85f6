// Operations that only a transport or a model can carry out, and those of the autofocus.

#include "property/CZELDevicePropertyImpl.h"
#include "property/OutParameter.h"

namespace zel {

// ---- without hardware behind it the store has no registers, ports or ROM

HRESULT CZELDevicePropertyImpl::SetRegister(LONG, LONG) {
  return E_NOTIMPL;
}
HRESULT CZELDevicePropertyImpl::GetRegister(LONG, LONG*) {
  return E_NOTIMPL;
}
HRESULT CZELDevicePropertyImpl::SetRegisterEx(LONG, LONG, LONG) {
  return E_NOTIMPL;
}
HRESULT CZELDevicePropertyImpl::GetRegisterEx(LONG, LONG*, LONG) {
  return E_NOTIMPL;
}
HRESULT CZELDevicePropertyImpl::SetRegisterB(unsigned char, unsigned char) {
  return E_NOTIMPL;
}
HRESULT CZELDevicePropertyImpl::GetRegisterB(unsigned char, LONG*) {
  return E_NOTIMPL;
}
HRESULT CZELDevicePropertyImpl::ChangePIDtoDS() {
  return E_NOTIMPL;
}
HRESULT CZELDevicePropertyImpl::SetIO(LONG) {
  return E_NOTIMPL;
}
HRESULT CZELDevicePropertyImpl::GetIO(LONG*) {
  return E_NOTIMPL;
}
HRESULT CZELDevicePropertyImpl::SetIOPort(LONG value) {
  return SetIO(value);
}
HRESULT CZELDevicePropertyImpl::GetIOPort(LONG* value) {
  return GetIO(value);
}
HRESULT CZELDevicePropertyImpl::SetSROMRegister(LONG, LONG) {
  return E_NOTIMPL;
}
HRESULT CZELDevicePropertyImpl::GetSROMRegister(LONG, LONG*) {
  return E_NOTIMPL;
}
HRESULT CZELDevicePropertyImpl::SetFpgaRegister(LONG, LONG) {
  return E_NOTIMPL;
}
HRESULT CZELDevicePropertyImpl::GetFpgaRegister(LONG, LONG*) {
  return E_NOTIMPL;
}
HRESULT CZELDevicePropertyImpl::SetSROMID(LONG, LONG) {
  return E_NOTIMPL;
}
HRESULT CZELDevicePropertyImpl::GetSROMID(LONG, LONG*) {
  return E_NOTIMPL;
}
HRESULT CZELDevicePropertyImpl::SetModelOption(const unsigned char*, LONG) {
  return E_NOTIMPL;
}
HRESULT CZELDevicePropertyImpl::SetModelValue1(LONG) {
  return E_NOTIMPL;
}
HRESULT CZELDevicePropertyImpl::GetModelValue1(LONG*) {
  return E_NOTIMPL;
}
HRESULT CZELDevicePropertyImpl::SetModelValue2(LONG) {
  return E_NOTIMPL;
}
HRESULT CZELDevicePropertyImpl::GetModelValue2(LONG*) {
  return E_NOTIMPL;
}
HRESULT CZELDevicePropertyImpl::SetModelValue3(LONG) {
  return E_NOTIMPL;
}
HRESULT CZELDevicePropertyImpl::GetModelValue3(LONG*) {
  return E_NOTIMPL;
}
HRESULT CZELDevicePropertyImpl::SetModelValue4(LONG) {
  return E_NOTIMPL;
}
HRESULT CZELDevicePropertyImpl::GetModelValue4(LONG*) {
  return E_NOTIMPL;
}
HRESULT CZELDevicePropertyImpl::SetModelValue5(LONG) {
  return E_NOTIMPL;
}
HRESULT CZELDevicePropertyImpl::GetModelValue5(LONG*) {
  return E_NOTIMPL;
}
HRESULT CZELDevicePropertyImpl::GetMark(LONG*) {
  return E_NOTIMPL;
}
HRESULT CZELDevicePropertyImpl::SetSerialNum(unsigned char*) {
  return S_OK;
}
HRESULT CZELDevicePropertyImpl::GetSerialNum(unsigned char*) {
  return S_OK;
}

// ---- autofocus

HRESULT CZELDevicePropertyImpl::SetAutoFocusFilterType(LONG type) {
  autoFocus_.SetAutoFocusFilterType(type);
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::SetAutoFocusRange(LONG minimum, LONG maximum) {
  autoFocus_.SetAutoFocusRange(minimum, maximum);
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::SetAutoFocusCurPos(LONG position) {
  autoFocus_.SetAutoFocusCurPos(position);
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::SetOperatorBlock(LONG x, LONG y, LONG width, LONG height) {
  constexpr LONG kSmallestBlock = 30;  // pixels; below it the measure is noise
  if (x < 0 || y < 0 || width < kSmallestBlock || height < kSmallestBlock) return E_NOTIMPL;
  autoFocus_.SetOperatorBlock(x, y, width, height);
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::GetAutoFocusCurPos(LONG* position) {
  Put(position, autoFocus_.GetAutoFocusCurPos());
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::StartAutoFocus() try {
  autoFocus_.StartAutoFocus();
  return S_OK;
} catch (...) {
  return E_FAIL;  // no memory or no thread for the search
}

HRESULT CZELDevicePropertyImpl::StopAutoFocus() {
  autoFocus_.StopAutoFocus();
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::GetAutoFocusLevel(LONG* level) {
  Put(level, autoFocus_.GetAutoFocusLevel());
  return S_OK;
}

HRESULT CZELDevicePropertyImpl::SetAutoFocusMode(LONG mode) {
  autoFocus_.SetAutoFocusMode(mode);
  return S_OK;
}

LONG CZELDevicePropertyImpl::ReadFocusPosition() {
  PropertyRecord record;
  GetPropertyInfo(kFocusPosition, &record);
  return record.current;
}

void CZELDevicePropertyImpl::WriteFocusPosition(LONG position) {
  SetProperty(kFocusPosition, position);
}

}  // namespace zel
