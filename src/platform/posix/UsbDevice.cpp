#include "platform/posix/UsbDevice.h"

#include <memory>

#include "platform/posix/UsbTransfer.h"

namespace zel {
namespace {

struct ConfigFree {
  void operator()(libusb_config_descriptor* config) const { libusb_free_config_descriptor(config); }
};

}  // namespace

DriverError DriverErrorOfUsb(int libusbError) {
  switch (libusbError) {
    case LIBUSB_SUCCESS:
      return DriverError::None;
    case LIBUSB_ERROR_ACCESS:
      return DriverError::AccessDenied;
    case LIBUSB_ERROR_BUSY:
      return DriverError::SharingViolation;
    case LIBUSB_ERROR_NO_DEVICE:
      return DriverError::NotConnected;
    case LIBUSB_ERROR_NOT_FOUND:
      return DriverError::FileNotFound;
    case LIBUSB_ERROR_TIMEOUT:
      return DriverError::Timeout;
    case LIBUSB_ERROR_INTERRUPTED:
      return DriverError::Aborted;
    case LIBUSB_ERROR_INVALID_PARAM:
      return DriverError::InvalidParameter;
    case LIBUSB_ERROR_NOT_SUPPORTED:
      return DriverError::NotSupported;
    default:
      return DriverError::GeneralFailure;
  }
}

DriverError DriverErrorOfTransfer(int libusbStatus) {
  switch (libusbStatus) {
    case LIBUSB_TRANSFER_COMPLETED:
      return DriverError::None;
    case LIBUSB_TRANSFER_TIMED_OUT:
      return DriverError::Timeout;
    case LIBUSB_TRANSFER_CANCELLED:
      return DriverError::Aborted;
    case LIBUSB_TRANSFER_NO_DEVICE:
      return DriverError::NotConnected;
    default:
      return DriverError::GeneralFailure;
  }
}

std::unique_ptr<UsbDevice> UsbDevice::Open(libusb_device* device, DriverError* error) {
  libusb_device_handle* handle = nullptr;
  int problem = libusb_open(device, &handle);
  std::unique_ptr<UsbDevice> opened;
  if (problem == LIBUSB_SUCCESS) {
    opened.reset(new UsbDevice(handle));
    problem = opened->Claim();
  }
  *error = DriverErrorOfUsb(problem);
  if (problem != LIBUSB_SUCCESS) return nullptr;
  return opened;
}

UsbDevice::~UsbDevice() {
  libusb_close(handle_);  // gives the interface back, too
}

int UsbDevice::Claim() {
  libusb_config_descriptor* found = nullptr;
  const int problem = libusb_get_active_config_descriptor(Device(), &found);
  if (problem != LIBUSB_SUCCESS) return problem;
  const std::unique_ptr<libusb_config_descriptor, ConfigFree> config(found);
  for (int n = 0; n < config->bNumInterfaces; ++n) {
    if (config->interface[n].num_altsetting == 0) continue;
    const libusb_interface_descriptor& setting = config->interface[n].altsetting[0];
    for (int e = 0; e < setting.bNumEndpoints; ++e) {
      const libusb_endpoint_descriptor& endpoint = setting.endpoint[e];
      if ((endpoint.bmAttributes & LIBUSB_TRANSFER_TYPE_MASK) != LIBUSB_ENDPOINT_TRANSFER_TYPE_BULK) continue;
      const bool in = endpoint.bEndpointAddress & LIBUSB_ENDPOINT_IN;
      (in ? bulkIn_ : bulkOut_).push_back(endpoint.bEndpointAddress);
    }
    if (!bulkIn_.empty() || !bulkOut_.empty())
      return libusb_claim_interface(handle_, setting.bInterfaceNumber);
  }
  return LIBUSB_ERROR_NOT_SUPPORTED;
}

void UsbDevice::Abort(DriverError reason, std::optional<std::uint8_t> endpoint) {
  const std::lock_guard lock(mutex_);
  for (UsbTransfer* const transfer : transfers_) transfer->Cancel(reason, endpoint);
}

DriverResult UsbDevice::ResetPipe(std::uint8_t endpoint) {
  if (isUnplugged_) return DriverResult::Failed(DriverError::NotConnected);
  Abort(DriverError::Aborted, endpoint);
  const int problem = libusb_clear_halt(handle_, endpoint);
  return {problem == LIBUSB_SUCCESS, 0, DriverErrorOfUsb(problem)};
}

DriverResult UsbDevice::Reset() {
  if (isUnplugged_) return DriverResult::Failed(DriverError::NotConnected);
  const int problem = libusb_reset_device(handle_);
  if (problem == LIBUSB_ERROR_NOT_FOUND || problem == LIBUSB_ERROR_NO_DEVICE) {
    NoteUnplugged();
    return DriverResult::Failed(DriverError::NotConnected);
  }
  return {problem == LIBUSB_SUCCESS, 0, DriverErrorOfUsb(problem)};
}

void UsbDevice::NoteUnplugged() {
  isUnplugged_ = true;
  Abort(DriverError::NotConnected);
}

void UsbDevice::Add(UsbTransfer& transfer) {
  const std::lock_guard lock(mutex_);
  transfers_.push_back(&transfer);
}

void UsbDevice::Remove(UsbTransfer& transfer) {
  const std::lock_guard lock(mutex_);
  std::erase(transfers_, &transfer);
}

}  // namespace zel
