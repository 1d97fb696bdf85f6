#pragma once

#include "transport/usb3/DiskSectors.h"

namespace zel {

/// Settings traffic of a disk-style camera whose registers have 8 bits: each access is one command. On a
/// handle of its own, so that settings never wait for a frame.
class DiskBytePort {
 public:
  /// False, and closed, unless the drive is a camera of that type; `identity` receives its number.
  bool Open(LONG drive, LONG type, LONG* identity);
  void Close() { disk_.Close(); }
  bool IsOpen() const { return disk_.IsOpen(); }

  bool PrepareCapture() { return Send(DiskCommand::PrepareCapture, {}); }
  bool Write(LONG address, LONG byte);
  bool Read(LONG address, LONG* byte);

 private:
  bool Send(DiskCommand command, std::initializer_list<std::uint8_t> arguments);

  SectorDevice disk_;
  Sector sector_{};  ///< the last command sent or status read
};

}  // namespace zel
