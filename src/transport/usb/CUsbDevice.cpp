#include "transport/usb/CUsbDevice.h"

#include <array>
#include <limits>

#include "common/BytePacking.h"

namespace zel {
namespace {

// Driver control codes: device type 0x22, any access.
constexpr std::uint32_t kPlainSend = 0x222051;
constexpr std::uint32_t kPlainReceive = 0x22204E;
constexpr std::uint32_t kAlternativeSend = 0x2220A9;
constexpr std::uint32_t kAlternativeReceive = 0x2220A6;
constexpr std::uint32_t kDriverSettings = 0x2220A0;
constexpr std::uint32_t kPipeReset = 0x22203D;

constexpr std::uint32_t kTimeoutSetting = 1;
constexpr std::size_t kSettingsBytes = 44;

constexpr std::uint32_t TransferCode(UsbTransferKind kind, bool send) {
  if (kind == UsbTransferKind::Plain) return send ? kPlainSend : kPlainReceive;
  return send ? kAlternativeSend : kAlternativeReceive;
}

std::array<std::uint8_t, 4> PipeNumber(UsbPipe pipe) {
  std::array<std::uint8_t, 4> bytes{};
  StoreLittle32(bytes.data(), static_cast<std::uint32_t>(pipe));
  return bytes;
}

}  // namespace

bool CUsbDevice::Open(const std::u16string& path) {
  const std::lock_guard turn(turn_);
  handle_.reset();
  DriverError error = DriverError::None;
  handle_ = CurrentDriverHost().Open({.path = path, .access = kAccessWrite, .share = kShareWrite, .flags = 0},
                                     &error);
  return handle_ != nullptr;
}

void CUsbDevice::Close() {
  const std::lock_guard turn(turn_);
  handle_.reset();
}

bool CUsbDevice::BulkTransfer(UsbTransferKind kind, UsbPipe pipe, std::span<std::uint8_t> data,
                              std::uint32_t* moved, bool send) {
  *moved = 0;
  if (data.empty() || data.data() == nullptr) return false;
  if (data.size() > std::numeric_limits<std::uint32_t>::max()) return false;
  const DriverResult result = Control(TransferCode(kind, send), PipeNumber(pipe), data);
  if (!result.ok || result.bytes > data.size()) return false;
  *moved = result.bytes;
  return true;
}

bool CUsbDevice::PipeWrite(UsbPipe pipe, std::span<std::uint8_t> data) {
  std::uint32_t moved = 0;
  return BulkTransfer(UsbTransferKind::Plain, pipe, data, &moved, true) && moved == data.size();
}

bool CUsbDevice::PipeRead(UsbPipe pipe, std::span<std::uint8_t> data) {
  std::uint32_t moved = 0;
  return BulkTransfer(UsbTransferKind::Plain, pipe, data, &moved, false) && moved == data.size();
}

void CUsbDevice::ResetImagePipe() {
  (void)Control(kPipeReset, PipeNumber(UsbPipe::Image), {});
}

bool CUsbDevice::SetDriverTimeout(std::int32_t value) {
  std::array<std::uint8_t, kSettingsBytes> settings{};
  StoreLittle32(settings.data(), kTimeoutSetting);
  StoreLittle32(settings.data() + 4, static_cast<std::uint32_t>(value));
  return Control(kDriverSettings, settings, {}).ok;
}

DriverResult CUsbDevice::Control(std::uint32_t code, std::span<const std::uint8_t> in,
                                 std::span<std::uint8_t> out) {
  const std::lock_guard turn(turn_);
  if (!handle_) return DriverResult::Failed(DriverError::InvalidHandle);
  return handle_->Control(code, in, out);
}

}  // namespace zel
