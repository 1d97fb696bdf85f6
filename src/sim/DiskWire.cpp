#include "sim/DiskWire.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "common/BytePacking.h"
#include "platform/Text.h"

namespace zel {
namespace {

constexpr std::uint64_t kStatus = 0x20000, kCommand = 0x20200, kImage = 0x20400;
constexpr std::string_view kSignature = "ORVANE";
constexpr std::uint8_t kPrepare = 0x10, kWriteRegister = 0x20, kReadRegister = 0x21;
constexpr int kFirstIdentity = 1000;  // of the camera at drive 0
constexpr std::uint32_t kPreparingMs = 5;

/// Bytes of a command that may differ from 0, or 0 for an unknown one.
std::size_t CommandLength(std::uint8_t code) {
  switch (code) {
    case kPrepare:
      return 1;
    case kWriteRegister:
      return 4;
    case kReadRegister:
      return 3;
    default:
      return 0;
  }
}

}  // namespace

std::u16string DiskWire::Path() const {
  return u"\\\\.\\PhysicalDrive" + ToUtf16(std::to_string(Address().index));
}

DriverResult DiskWire::ReadAt(std::uint64_t position, std::span<std::uint8_t> out) {
  if (position == kStatus && out.size() == kSectorSize) return GiveStatus(out);
  if (position == kImage) return GiveImage(out);
  return Refuse(DriverError::InvalidParameter,
                "read of " + std::to_string(out.size()) + " bytes at " + Hex(position));
}

DriverResult DiskWire::GiveStatus(std::span<std::uint8_t> out) {
  const std::lock_guard lock(mutex_);
  // Frames begin once the host has set the registers of its capture and asks for nothing but them.
  const bool asksForFrame = !std::exchange(answering_, false);
  if (prepared_ && asksForFrame && !preparing_.IsRunning() && !ready_) {
    VirtualCamera::Frame frame;
    const DriverError error = Camera().AwaitFrame(0, &frame);
    if (error == DriverError::NotConnected) return DriverResult::Failed(error);
    if (error == DriverError::None) ready_ = frame;
  }
  std::ranges::fill(out, std::uint8_t{0});
  std::ranges::copy(kSignature, out.begin());
  const std::uint16_t model = Camera().Map().modelCode;
  const int identity = kFirstIdentity + Address().index;
  out[26] = ByteOf(model, 0);
  out[27] = ByteOf(model, 1);
  out[28] = ByteOf(identity, 0);
  out[29] = ByteOf(identity, 1);
  out[256] = ready_.has_value();
  out[257] = readBack_;
  return DriverResult::Done(static_cast<std::uint32_t>(out.size()));
}

DriverResult DiskWire::GiveImage(std::span<std::uint8_t> out) {
  std::optional<VirtualCamera::Frame> frame;
  {
    const std::lock_guard lock(mutex_);
    if (!ready_) return Refuse(DriverError::GeneralFailure, "image read before a frame is ready");
    const ReadoutWindow& window = ready_->picture.readout.window;
    const auto pixels = static_cast<std::size_t>(window.columns) * static_cast<std::size_t>(window.rows);
    if (out.size() != RoundUp(pixels, kSectorSize))
      return Refuse(DriverError::InvalidParameter, "image read of " + std::to_string(out.size()) +
                                                       " bytes from a frame of " + std::to_string(pixels));
    frame = std::exchange(ready_, std::nullopt);
  }
  Camera().Expose(*frame, 1, out);
  const bool cut = frame->fault == SimFault::Kind::Short;
  return DriverResult::Done(static_cast<std::uint32_t>(cut ? out.size() / 2 : out.size()));
}

DriverResult DiskWire::WriteAt(std::uint64_t position, std::span<const std::uint8_t> in) {
  if (position != kCommand || in.size() != kSectorSize)
    return Refuse(DriverError::InvalidParameter,
                  "write of " + std::to_string(in.size()) + " bytes at " + Hex(position));
  const std::uint8_t command = in[0];
  const std::size_t length = CommandLength(command);
  if (length == 0) return Refuse(DriverError::GeneralFailure, "unknown command " + Hex(command));
  if (std::ranges::any_of(in.subspan(length), [](std::uint8_t byte) { return byte != 0; }))
    return Refuse(DriverError::GeneralFailure, "command " + Hex(command) + " is not zero after its data");

  const std::lock_guard lock(mutex_);
  if (command == kPrepare) {
    Camera().ResetExposure();
    Camera().RestartStream();
    prepared_ = true;
    preparing_.Start(kPreparingMs);
    ready_.reset();
  } else if (preparing_.IsRunning()) {
    // The sector itself was written: nothing tells the host.
    Camera().NoteProtocolError("register access while a capture is prepared");
  } else {
    answering_ = command == kReadRegister;
    AccessRegister(command, FromBytes16(in[2], in[1]), in[3]);
  }
  return DriverResult::Done(static_cast<std::uint32_t>(in.size()));
}

void DiskWire::AccessRegister(std::uint8_t command, std::uint16_t address, std::uint8_t byte) {
  const bool writes = command == kWriteRegister;
  if (Camera().Map().valueBytes == 1) {
    if (writes) {
      Camera().WriteRegister(address, byte);
    } else {
      readBack_ = ByteOf(Camera().ReadRegister(address), 0);
    }
    return;
  }
  const auto first = TakeHalf(command, address);
  if (!first) {
    half_ = HalfRegister{command, address, byte};
    if (!writes) readBack_ = ByteOf(Camera().ReadRegister(address), 1);
  } else if (writes) {
    Camera().WriteRegister(first->address, FromBytes16(byte, first->high));
  } else {
    readBack_ = ByteOf(Camera().ReadRegister(first->address), 0);
  }
}

/// Where the sensor's registers have 16 bits: the high byte travels under the register's address, the low
/// byte right after it under the next one.
std::optional<DiskWire::HalfRegister> DiskWire::TakeHalf(std::uint8_t command, std::uint16_t address) {
  const auto half = std::exchange(half_, std::nullopt);
  if (!half) return {};
  if (half->command == command && static_cast<std::uint16_t>(half->address + 1) == address) return half;
  Camera().NoteProtocolError("register " + Hex(half->address) + " without its low byte");
  return {};
}

}  // namespace zel
