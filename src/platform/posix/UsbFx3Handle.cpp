#include <algorithm>
#include <cstddef>
#include <utility>

#include "common/BytePacking.h"
#include "platform/Threads.h"
#include "platform/posix/UsbHandles.h"
#include "platform/posix/UsbTransfer.h"

namespace zel {
namespace {

constexpr std::uint32_t kControlTransfer = 0x220020, kBulkTransfer = 0x220024, kDirectTransfer = 0x22004B;
constexpr std::uint32_t kCyclePort = 0x220028, kResetParentPort = 0x220030;
constexpr std::uint32_t kResetPipe = 0x22002C, kAbortPipe = 0x220044, kGetSpeed = 0x22004C;

// The header before the data of a transfer: setup packet in bytes 0 to 7, time-out in ms at 8, endpoint at
// 13, then what the driver writes, where the data lie and how many they are.
constexpr std::size_t kHeaderBytes = 38;
constexpr std::size_t kTimeout = 8, kEndpoint = 13, kDriverStatus = 14, kUsbStatus = 18;
constexpr std::size_t kDataOffset = 30, kDataLength = 34;
constexpr std::uint8_t kSetupTypeBits = 0xE3;  // recipient, type, direction; the others hold anything

// What the Windows USB stack writes there: the nearest that tells the causes apart.
constexpr std::uint32_t kStatusUnsuccessful = 0xC0000001, kStatusTimeout = 0xC00000B5,
                        kStatusCancelled = 0xC0000120, kStatusNotConnected = 0xC000009D;
constexpr std::uint32_t kUsbInternalError = 0x80000800, kUsbCancelled = 0xC0010000,
                        kUsbDeviceGone = 0xC0007000;

struct Statuses {
  std::uint32_t driver = 0, usb = 0;
};

Statuses StatusesOf(DriverError error) {
  switch (error) {
    case DriverError::None:
      return {};
    case DriverError::Timeout:
      return {kStatusTimeout, kUsbCancelled};
    case DriverError::Aborted:
      return {kStatusCancelled, kUsbCancelled};
    case DriverError::NotConnected:
      return {kStatusNotConnected, kUsbDeviceGone};
    default:
      return {kStatusUnsuccessful, kUsbInternalError};
  }
}

/// A transfer with its header in the caller's buffer. The counts it reports include the header.
class Fx3Transfer : public PendingControl {
 public:
  /// `header` is where the statuses go, empty if the caller's is not to be written.
  Fx3Transfer(std::shared_ptr<UsbDevice> device, std::span<std::uint8_t> header)
      : device_(std::move(device)), header_(header), transfer_(*device_) {}

  UsbTransfer& Transfer() { return transfer_; }

  Waited Wait(std::uint32_t milliseconds) override {
    return transfer_.Wait(milliseconds) ? Waited::Done : Waited::Timeout;
  }

  DriverResult Finish() override {
    DriverResult result = transfer_.Result();
    if (header_.empty() || result.error == DriverError::Pending) return result;
    const Statuses statuses = StatusesOf(result.error);
    StoreLittle32(&header_[kDriverStatus], statuses.driver);
    StoreLittle32(&header_[kUsbStatus], statuses.usb);
    result.bytes += static_cast<std::uint32_t>(kHeaderBytes);
    return result;
  }

  void Cancel() override { transfer_.Cancel(DriverError::Aborted); }

 private:
  const std::shared_ptr<UsbDevice> device_;
  const std::span<std::uint8_t> header_;
  UsbTransfer transfer_;
};

class UsbFx3Handle : public DriverHandle {
 public:
  explicit UsbFx3Handle(std::shared_ptr<UsbDevice> device) : device_(std::move(device)) {}

  DriverResult Control(std::uint32_t code, std::span<const std::uint8_t> in,
                       std::span<std::uint8_t> out) override {
    switch (code) {
      case kResetPipe:
        return in.size() == 1 ? device_->ResetPipe(in[0])
                              : DriverResult::Failed(DriverError::InvalidParameter);
      case kAbortPipe:
        if (in.size() != 1) return DriverResult::Failed(DriverError::InvalidParameter);
        device_->Abort(DriverError::Aborted, in[0]);
        return DriverResult::Done(0);
      case kCyclePort:
      case kResetParentPort:
        return device_->Reset();
      case kGetSpeed:
        return GetSpeed(out);
      default:
        break;
    }
    DriverError error = DriverError::None;
    const auto transfer = BeginControl(code, in, out, &error);
    if (!transfer) return DriverResult::Failed(error);
    transfer->Wait(kForever);  // the time-out in the header ends it
    return transfer->Finish();
  }

  std::unique_ptr<PendingControl> BeginControl(std::uint32_t code, std::span<const std::uint8_t> in,
                                               std::span<std::uint8_t> out, DriverError* error) override {
    const bool direct = code == kDirectTransfer;
    *error = DriverError::NotSupported;
    if (!direct && code != kControlTransfer && code != kBulkTransfer) return nullptr;
    *error = DriverError::InvalidParameter;
    if (in.size() < kHeaderBytes || LoadLittle32(&in[kDataOffset]) != kHeaderBytes) return nullptr;
    // The data of a direct transfer are all of `out`, those of the others lie behind the header in it.
    if (!direct && (in.size() != out.size() || LoadLittle32(&in[kDataLength]) > out.size() - kHeaderBytes))
      return nullptr;
    // Caller's data go out from `out`, which is the same memory for the driver's usual callers.
    if (!direct && in.data() != out.data()) std::ranges::copy(in, out.begin());
    const std::span<std::uint8_t> data =
        direct ? out : out.subspan(kHeaderBytes, LoadLittle32(&in[kDataLength]));
    const std::uint32_t timeoutMs = LoadLittle32(&in[kTimeout]);

    auto transfer = std::make_unique<Fx3Transfer>(device_, direct ? std::span<std::uint8_t>() : out);
    if (code == kControlTransfer) {
      // On the bus the length is that of the data; the header's own field counts the whole buffer.
      const UsbSetup setup{.requestType = static_cast<std::uint8_t>(in[0] & kSetupTypeBits),
                           .request = in[1],
                           .value = FromBytes16(in[2], in[3]),
                           .index = FromBytes16(in[4], in[5])};
      *error = transfer->Transfer().StartControl(setup, data, timeoutMs);
    } else {
      *error = transfer->Transfer().StartBulk(in[kEndpoint], data, timeoutMs);
    }
    if (*error != DriverError::None) return nullptr;
    return transfer;
  }

  DriverResult Seek(std::uint64_t) override { return DriverResult::Failed(DriverError::NotSupported); }
  DriverResult Read(std::span<std::uint8_t>) override {
    return DriverResult::Failed(DriverError::NotSupported);
  }
  DriverResult Write(std::span<const std::uint8_t>) override {
    return DriverResult::Failed(DriverError::NotSupported);
  }

 private:
  DriverResult GetSpeed(std::span<std::uint8_t> out) {
    if (out.size() != 4) return DriverResult::Failed(DriverError::InvalidParameter);
    if (device_->IsUnplugged()) return DriverResult::Failed(DriverError::NotConnected);
    // 0 low, 1 full, 2 high, 3 super; 0 also when the system does not know.
    const int speed =
        std::clamp<int>(libusb_get_device_speed(device_->Device()), LIBUSB_SPEED_LOW, LIBUSB_SPEED_SUPER);
    StoreLittle32(out.data(), static_cast<std::uint32_t>(speed - LIBUSB_SPEED_LOW));
    return DriverResult::Done(4);
  }

  const std::shared_ptr<UsbDevice> device_;
};

}  // namespace

std::unique_ptr<DriverHandle> MakeUsbFx3Handle(std::shared_ptr<UsbDevice> device) {
  return std::make_unique<UsbFx3Handle>(std::move(device));
}

}  // namespace zel
