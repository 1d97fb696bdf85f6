#pragma once

#include <libusb.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/DriverHost.h"

namespace zel {

class UsbTransfer;

/// For LIBUSB_ERROR_... and for LIBUSB_TRANSFER_... numbers.
DriverError DriverErrorOfUsb(int libusbError);
DriverError DriverErrorOfTransfer(int libusbStatus);

/// An opened device with its first interface that has bulk endpoints, shared by all handles of the process on
/// it: the system lets an interface be claimed only once. Any thread.
class UsbDevice {
 public:
  /// Null with the reason in `error` when the system does not let it be opened or it has no such interface.
  static std::unique_ptr<UsbDevice> Open(libusb_device* device, DriverError* error);
  ~UsbDevice();
  UsbDevice(const UsbDevice&) = delete;
  UsbDevice& operator=(const UsbDevice&) = delete;

  libusb_device_handle* Handle() const { return handle_; }
  libusb_device* Device() const { return libusb_get_device(handle_); }
  /// Addresses in the interface's order; bit 7 is the direction.
  const std::vector<std::uint8_t>& BulkOut() const { return bulkOut_; }
  const std::vector<std::uint8_t>& BulkIn() const { return bulkIn_; }

  /// Ends the transfers under way on one endpoint, or all, for this reason.
  void Abort(DriverError reason, std::optional<std::uint8_t> endpoint = {});
  /// Ends what is under way on an endpoint and clears its halt.
  DriverResult ResetPipe(std::uint8_t endpoint);
  /// Resets the device at its port. One that comes back as another has left.
  DriverResult Reset();
  /// The device has left: ends what is under way; nothing starts any more.
  void NoteUnplugged();
  bool IsUnplugged() const { return isUnplugged_; }

  /// Of later transfers on the camera pipes, in ms; 0: none. One setting for all handles, as in a driver.
  std::atomic<std::uint32_t> pipeTimeoutMs = 3000;

 private:
  friend class UsbTransfer;

  explicit UsbDevice(libusb_device_handle* handle) : handle_(handle) {}
  int Claim();
  void Add(UsbTransfer& transfer);
  void Remove(UsbTransfer& transfer);

  libusb_device_handle* const handle_;
  std::vector<std::uint8_t> bulkOut_, bulkIn_;
  std::atomic<bool> isUnplugged_ = false;
  std::mutex mutex_;  ///< guards the list; taken before a transfer's own
  std::vector<UsbTransfer*> transfers_;
};

}  // namespace zel
