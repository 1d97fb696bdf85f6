#include "models/usb3/DiskBytePort.h"

#include "common/BytePacking.h"
#include "transport/usb3/DiskIdentification.h"

namespace zel {
namespace {

void Note(DriverHost::RegisterAccess access, LONG address, LONG byte) {
  CurrentDriverHost().NoteRegister(access, static_cast<std::uint16_t>(address), ByteOf(byte, 0));
}

}  // namespace

bool DiskBytePort::Open(LONG drive, LONG type, LONG* identity) {
  const auto turn = disk_.TakeTurn();
  if (!disk_.Open(DiskPath(drive))) return false;
  if (!ReadDiskStatus(disk_, sector_) || !HasDiskSignature(sector_) || DiskCameraType(sector_) != type) {
    disk_.Close();
    return false;
  }
  *identity = FromBytes16(sector_[kDiskIdentityLow], sector_[kDiskIdentityHigh]);
  return true;
}

bool DiskBytePort::Write(LONG address, LONG byte) {
  if (!Send(DiskCommand::RegisterWrite, {ByteOf(address, 1), ByteOf(address, 0), ByteOf(byte, 0)}))
    return false;
  Note(DriverHost::RegisterAccess::Write, address, byte);
  return true;
}

bool DiskBytePort::Read(LONG address, LONG* byte) {
  const auto turn = disk_.TakeTurn();
  if (!Send(DiskCommand::RegisterRead, {ByteOf(address, 1), ByteOf(address, 0)})) return false;
  if (!ReadDiskStatus(disk_, sector_)) return false;
  *byte = sector_[kDiskReadBack];
  Note(DriverHost::RegisterAccess::Read, address, *byte);
  return true;
}

bool DiskBytePort::Send(DiskCommand command, std::initializer_list<std::uint8_t> arguments) {
  const auto turn = disk_.TakeTurn();
  sector_ = DiskCommandSector(command, arguments);
  return disk_.WriteSectorAt(kDiskCommandPosition, sector_);
}

}  // namespace zel
