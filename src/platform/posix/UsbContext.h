#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

#include "platform/Threads.h"
#include "platform/posix/UsbCameras.h"
#include "platform/posix/UsbDevice.h"

namespace zel {

/// The process's one link to the USB: made when the first USB camera is looked for, gone at the process's end
/// or with the last open device after it. One thread carries the transfers of all devices and hears of
/// devices that leave. Any thread.
class UsbContext : public std::enable_shared_from_this<UsbContext> {
 public:
  /// Null on a system without USB, and while the process ends.
  static std::shared_ptr<UsbContext> Get();

  ~UsbContext();
  UsbContext(const UsbContext&) = delete;
  UsbContext& operator=(const UsbContext&) = delete;

  /// Where devices with these identifiers are plugged in now, in order.
  std::vector<UsbLocation> Find(std::span<const UsbId> ids) const;
  /// The device with one of these identifiers at a place; shared with who else has it open in this process.
  /// Null with the reason in `error`. Keeps the context.
  std::shared_ptr<UsbDevice> Open(const UsbLocation& location, std::span<const UsbId> ids,
                                  DriverError* error);

 private:
  struct OpenedDevice {
    std::unique_ptr<UsbDevice> device;
    int users = 0;
  };

  explicit UsbContext(libusb_context* context);
  void RunEvents();
  void Close(UsbDevice* device);
  static int LIBUSB_CALL OnLeft(libusb_context*, libusb_device* device, libusb_hotplug_event, void* self);

  libusb_context* const context_;
  std::mutex turn_;  ///< one open or close at a time; never taken by the event thread
  std::mutex listMutex_;
  std::vector<OpenedDevice> opened_;  ///< changed with both locks, read with one
  std::atomic<bool> isStopping_ = false;
  std::unique_ptr<Worker> events_;
};

}  // namespace zel
