#include "transport/usb/CZELDevicePropertyImplUSB.h"

#include "common/BytePacking.h"
#include "property/OutParameter.h"

namespace zel {

HRESULT CZELDevicePropertyImplUSB::SetFpgaRegister(LONG address, LONG value) {
  return Send(FpgaWritePacket(ByteOf(address, 0), static_cast<std::uint16_t>(value))) ? 1 : 0;
}

HRESULT CZELDevicePropertyImplUSB::GetFpgaRegister(LONG address, LONG* value) {
  Put<LONG>(value, 0);
  if (!Query(FpgaReadPacket(ByteOf(address, 0)))) return E_FAIL;
  Put<LONG>(value, FromBytes16(Reply()[0], Reply()[1]));
  return S_OK;
}

HRESULT CZELDevicePropertyImplUSB::SetHalfClock(LONG on) {
  if (!IsAttached()) return E_FAIL;
  if (Record(kHalfClock).supported == 0) return S_OK;
  if (!Send(HalfClockPacket(on != 0))) return E_FAIL;
  // The new clock restarts the sensor, which then wants its set-up again.
  InitializeCamera();
  ApplyColorMatrix();
  return CZELDevicePropertyImpl::SetHalfClock(on);
}

HRESULT CZELDevicePropertyImplUSB::GetHalfClock(LONG* on) {
  if (!IsAttached()) return E_FAIL;
  Put<LONG>(on, 0);
  if (Record(kHalfClock).supported == 0) return S_OK;
  if (!Query(MakePacket(UsbCommand::GetHalfClock))) return E_FAIL;
  Edit(kHalfClock).current = Reply()[0] != 0;
  Put(on, Record(kHalfClock).current);
  return S_OK;
}

HRESULT CZELDevicePropertyImplUSB::ApplyColorMatrix() {
  NormaliseTransferMode();
  if (IsAttached() && !Send(TransferModePacket(settings_.transferMode != 0))) return E_FAIL;
  return CZELDevicePropertyImpl::ApplyColorMatrix();
}

}  // namespace zel
