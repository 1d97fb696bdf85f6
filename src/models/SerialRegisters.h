#pragma once

#include <array>
#include <cstdint>

#include "common/BytePacking.h"
#include "platform/DriverHost.h"
#include "property/OutParameter.h"

/// How the registers of CCD cameras travel over the USB packet protocol where they don't have 16 bits.
/// `FamilyProperty` is the property object of USB 2.0 or WOM models.
namespace zel {

/// Registers of 8 bits.
template <class FamilyProperty>
class ByteRegisters : public FamilyProperty {
 public:
  static constexpr int kRegisterBytes = 1;

  HRESULT SetRegister(LONG address, LONG value) override {
    return this->SetRegisterB(ByteOf(address, 0), ByteOf(value, 0));
  }
  HRESULT GetRegister(LONG address, LONG* value) override {
    return this->GetRegisterB(ByteOf(address, 0), value);
  }
};

/// Registers of 24 bits: words for the timing generator's serial port, high byte first.
template <class FamilyProperty>
class LongRegisters : public FamilyProperty {
 public:
  static constexpr int kRegisterBytes = 3;

  HRESULT SetRegister(LONG address, LONG value) override {
    const std::array bytes{ByteOf(address, 0), ByteOf(value, 2), ByteOf(value, 1), ByteOf(value, 0)};
    if (!this->WriteRegisterBytes(bytes)) return E_FAIL;
    Note(DriverHost::RegisterAccess::Write, bytes[0], value);
    return S_OK;
  }

  HRESULT GetRegister(LONG address, LONG* value) override {
    std::array<std::uint8_t, 3> bytes{};
    if (!this->ReadRegisterBytes(ByteOf(address, 0), bytes)) return E_FAIL;
    const LONG found = bytes[0] << 16 | bytes[1] << 8 | bytes[2];
    Put(value, found);
    Note(DriverHost::RegisterAccess::Read, ByteOf(address, 0), found);
    return S_OK;
  }

 private:
  static void Note(DriverHost::RegisterAccess access, std::uint8_t address, LONG value) {
    CurrentDriverHost().NoteRegister(access, address, static_cast<std::uint32_t>(value) & 0xFFFFFF);
  }
};

}  // namespace zel
