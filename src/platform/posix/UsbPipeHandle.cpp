#include <array>
#include <cstddef>
#include <utility>

#include "common/BytePacking.h"
#include "platform/Threads.h"
#include "platform/posix/UsbHandles.h"
#include "platform/posix/UsbTransfer.h"

namespace zel {
namespace {

constexpr std::size_t kPipes = 3, kImagePipe = 2;
constexpr std::size_t kSettingsBytes = 44;
constexpr std::uint32_t kTimeoutSetting = 1;

class UsbPipeHandle : public DriverHandle {
 public:
  UsbPipeHandle(std::shared_ptr<UsbDevice> device, std::array<std::uint8_t, kPipes> endpoints)
      : device_(std::move(device)), endpoints_(endpoints), transfer_(*device_) {}

  DriverResult Control(std::uint32_t code, std::span<const std::uint8_t> in,
                       std::span<std::uint8_t> out) override {
    switch (code) {
      // Plain and alternative transfers, send and receive. The codes differ in how Windows maps the memory;
      // the direction is the endpoint's: images come in with the send code.
      case 0x222051:
      case 0x22204E:
      case 0x2220A9:
      case 0x2220A6:
        return Transfer(in, out);
      case 0x2220A0:
        return SetDriver(in);
      case 0x22203D:
        return ResetPipe(in);
      default:
        return DriverResult::Failed(DriverError::NotSupported);
    }
  }

  std::unique_ptr<PendingControl> BeginControl(std::uint32_t, std::span<const std::uint8_t>,
                                               std::span<std::uint8_t>, DriverError* error) override {
    *error = DriverError::NotSupported;
    return nullptr;
  }
  DriverResult Seek(std::uint64_t) override { return DriverResult::Failed(DriverError::NotSupported); }
  DriverResult Read(std::span<std::uint8_t>) override {
    return DriverResult::Failed(DriverError::NotSupported);
  }
  DriverResult Write(std::span<const std::uint8_t>) override {
    return DriverResult::Failed(DriverError::NotSupported);
  }

 private:
  DriverResult Transfer(std::span<const std::uint8_t> in, std::span<std::uint8_t> out) {
    const std::uint32_t pipe = in.size() == 4 ? LoadLittle32(in.data()) : kPipes;
    if (pipe >= kPipes) return DriverResult::Failed(DriverError::InvalidParameter);
    const DriverError error = transfer_.StartBulk(endpoints_[pipe], out, device_->pipeTimeoutMs);
    if (error != DriverError::None) return DriverResult::Failed(error);
    transfer_.Wait(kForever);  // the transfer's own time-out ends it
    return transfer_.Result();
  }

  DriverResult SetDriver(std::span<const std::uint8_t> in) {
    if (in.size() != kSettingsBytes || LoadLittle32(in.data()) != kTimeoutSetting)
      return DriverResult::Failed(DriverError::InvalidParameter);
    device_->pipeTimeoutMs = LoadLittle32(&in[4]);
    return DriverResult::Done(0);
  }

  DriverResult ResetPipe(std::span<const std::uint8_t> in) {
    if (in.size() != 4 || LoadLittle32(in.data()) != kImagePipe)
      return DriverResult::Failed(DriverError::InvalidParameter);
    return device_->ResetPipe(endpoints_[kImagePipe]);
  }

  const std::shared_ptr<UsbDevice> device_;
  const std::array<std::uint8_t, kPipes> endpoints_;
  UsbTransfer transfer_;
};

}  // namespace

std::unique_ptr<DriverHandle> MakeUsbPipeHandle(std::shared_ptr<UsbDevice> device) {
  if (device->BulkOut().empty() || device->BulkIn().size() < 2) return nullptr;
  const std::array endpoints{device->BulkOut()[0], device->BulkIn()[0], device->BulkIn()[1]};
  return std::make_unique<UsbPipeHandle>(std::move(device), endpoints);
}

}  // namespace zel
