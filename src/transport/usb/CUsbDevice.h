#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <string>

#include "platform/DriverHost.h"
#include "platform/Mutex.h"

namespace zel {

/// Pipes of the USB camera driver.
enum class UsbPipe : std::uint32_t { Command = 0, Reply = 1, Image = 2 };

/// Which of the driver's two sets of transfer codes moves the bytes.
enum class UsbTransferKind { Plain, Alternative };

/// One handle to the USB camera driver; every transfer is one synchronous driver call. Transfers refuse a
/// closed handle, an empty area and a null pointer. A driver that claims to have moved more than it was given
/// has failed.
/// Threads: any; calls on one object take turns, as a read that outlives its capture may still be in the
/// driver when the next capture is prepared.
class CUsbDevice {
 public:
  /// Closes what was open before. False when no such device answers.
  bool Open(const std::u16string& path);
  void Close();

  /// Moves up to `data.size()` bytes; `moved` receives the driver's count. `send` names the driver's code,
  /// not the direction on the wire: image data comes in with the send code.
  bool BulkTransfer(UsbTransferKind kind, UsbPipe pipe, std::span<std::uint8_t> data, std::uint32_t* moved,
                    bool send);
  /// Plain transfers that count only when every byte moved.
  bool PipeWrite(UsbPipe pipe, std::span<std::uint8_t> data);
  bool PipeRead(UsbPipe pipe, std::span<std::uint8_t> data);

  /// Resets the image pipe. Its result says nothing about the camera.
  void ResetImagePipe();
  /// The driver's own time-out, in the units of the camera's `SetTimeout`.
  bool SetDriverTimeout(std::int32_t value);

 private:
  DriverResult Control(std::uint32_t code, std::span<const std::uint8_t> in, std::span<std::uint8_t> out);

  Mutex turn_;
  std::unique_ptr<DriverHandle> handle_;  ///< null: closed
};

}  // namespace zel
