#pragma once

#include <mutex>

#include "platform/Mutex.h"
#include "property/CZELDevicePropertyImpl.h"
#include "transport/usb3t2/CFx3Api.h"

namespace zel {

/// Settings of an FX3 camera: FPGA and sensor registers on the controller's bus, each access with a handle of
/// its own; the families' other registers do not exist here. A failed access is E_FAIL.
///
/// Threads: exposure control runs on the frame's thread and the focus search on its own, next to the
/// application. Bus accesses take turns, and so do the accesses to the settings that these threads share.
class CZELPropertyImplUSB3T2 : public CZELDevicePropertyImpl {
 public:
  CZELPropertyImplUSB3T2();

  HRESULT SetRegister(LONG address, LONG value) override;  ///< E_NOTIMPL; the models know their sensors
  HRESULT GetRegister(LONG address, LONG* value) override;
  HRESULT SetFpgaRegister(LONG address, LONG value) override;  ///< 8 bits each
  HRESULT GetFpgaRegister(LONG address, LONG* value) override;
  HRESULT SetIO(LONG value) override;
  HRESULT GetIO(LONG* value) override;
  HRESULT SetTransMode(LONG mode) override;            ///< any value from 0
  HRESULT GetSerialNum(unsigned char* text) override;  ///< an empty text

  // Not offered by these cameras: nothing happens, successfully, and nothing is written.
  HRESULT SetRegisterB(unsigned char, unsigned char) override { return S_OK; }
  HRESULT GetRegisterB(unsigned char, LONG*) override { return S_OK; }
  HRESULT SetSROMRegister(LONG, LONG) override { return S_OK; }
  HRESULT GetSROMRegister(LONG, LONG*) override { return S_OK; }
  HRESULT SetSROMID(LONG, LONG) override { return S_OK; }
  HRESULT GetSROMID(LONG, LONG*) override { return S_OK; }
  HRESULT SetHalfClock(LONG) override { return S_OK; }
  HRESULT GetHalfClock(LONG*) override { return S_OK; }
  HRESULT SetSerialNum(unsigned char*) override { return S_OK; }
  HRESULT SetTimeout(LONG) override { return S_OK; }

  /// The focus position reaches the camera before it is stored.
  HRESULT SetProperty(LONG id, LONG value) override;
  HRESULT GetPropertyInfo(LONG id, PropertyRecord* record) override;
  HRESULT GetShutter(LONG* value) override;
  HRESULT GetDigitalGlobalGain(LONG* value) override;
  HRESULT SetAuxValue3(LONG on) override;
  HRESULT GetAuxValue3(LONG* on) override;
  HRESULT SetAuxValue4(LONG on) override;
  HRESULT GetAuxValue4(LONG* on) override;

  /// Mean brightness that automatic exposure aims at, a field of the device; E_HANDLE without one.
  HRESULT SetAeTarget(LONG target);
  HRESULT GetAeTarget(LONG* target);

  HRESULT AttachDevice(CZELDevice* device) override;
  HRESULT ApplyColorMatrix() override;

 protected:
  /// Registers of the sensor: addresses and values of 16 bits.
  HRESULT SetSensorRegister(LONG address, LONG value);
  HRESULT GetSensorRegister(LONG address, LONG* value);

  /// Stores what the camera has taken.
  void StoreCurrent(LONG id, LONG value);

 private:
  /// Runs one bus access on a controller opened for it.
  template <class Access>
  HRESULT OnBus(Access access);

  LONG index_ = 0;
  Mutex busTurn_;
  Mutex storeTurn_;
};

}  // namespace zel
