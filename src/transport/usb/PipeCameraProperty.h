#pragma once

#include <span>

#include "property/CZELDevicePropertyImpl.h"
#include "transport/usb/CUsbDevice.h"
#include "transport/usb/UsbPackets.h"

namespace zel {

/// The settings traffic that all cameras behind the USB camera driver share: sensor registers, serial ROM,
/// I/O port, transfer mode and driver time-out, on a handle of its own. A failed transfer is E_FAIL. The
/// families add FPGA registers, half clock and what their capture preparation sends.
class PipeCameraProperty : public CZELDevicePropertyImpl {
 public:
  HRESULT SetRegister(LONG address, LONG value) override;  ///< 8-bit address, 16-bit value
  HRESULT GetRegister(LONG address, LONG* value) override;
  HRESULT SetRegisterB(unsigned char address, unsigned char value) override;
  HRESULT GetRegisterB(unsigned char address, LONG* value) override;
  HRESULT SetIO(LONG value) override;   ///< outputs in bits 2 and 3
  HRESULT GetIO(LONG* value) override;  ///< inputs in bits 0 and 1
  HRESULT SetSROMRegister(LONG address, LONG value) override;
  HRESULT GetSROMRegister(LONG address, LONG* value) override;
  /// Eight identification bytes, addresses 0..7; beyond them nothing happens, successfully.
  HRESULT SetSROMID(LONG address, LONG value) override;
  HRESULT GetSROMID(LONG address, LONG* value) override;
  HRESULT ChangePIDtoDS() override;
  HRESULT SetTimeout(LONG milliseconds) override;
  HRESULT SetTransMode(LONG mode) override;  ///< any value from 0; 0: one byte per sample, else two
  HRESULT SetModelOption(const unsigned char* data, LONG length) override;  ///< up to 60 bytes
  HRESULT AttachDevice(CZELDevice* device) override;  ///< always S_OK; what can't be opened fails on use
  HRESULT DetachDevice() override;
  void AbortTransfer() override {}

 protected:
  /// Registers with 16-bit addresses, as some sensors have them.
  HRESULT SetWideRegister(LONG address, LONG value);
  HRESULT GetWideRegister(LONG address, LONG* value);

  /// Raw register traffic: up to 63 bytes out (more are clipped), up to 64 bytes in.
  bool WriteRegisterBytes(std::span<const std::uint8_t> data);
  bool ReadRegisterBytes(std::uint8_t address, std::span<std::uint8_t> out);

  bool WriteSerialRom(std::uint8_t address, std::uint8_t value);
  bool ReadSerialRom(std::uint8_t address, std::uint8_t* value);

  bool Send(const UsbPacket& packet);
  /// The reply is in `Reply()` afterwards.
  bool Query(const UsbPacket& packet, std::uint32_t settleMs = 0);
  const UsbPacket& Reply() const { return packet_; }

  void NormaliseTransferMode();  ///< a negative mode becomes 0

 private:
  HRESULT WriteRegister(const UsbPacket& packet, std::uint32_t address, std::uint32_t value);
  HRESULT ReadRegister(const UsbPacket& packet, std::uint32_t address, LONG* value);

  UsbPacket packet_{};  ///< the last packet that went out or came in
  CUsbDevice usb_;
};

}  // namespace zel
