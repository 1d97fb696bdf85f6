#include "transport/usb3t2/CFx3Api.h"

#include <algorithm>
#include <utility>

#include "common/BytePacking.h"

namespace zel {
namespace {

constexpr GUID kFx3InterfaceClass = {
    0x328184C5, 0x93E6, 0x49B7, {0x94, 0xB8, 0x2A, 0xDA, 0x13, 0xAA, 0xBB, 0x39}};

// Driver control codes: device type 0x22, any access.
constexpr std::uint32_t kControlTransfer = 0x220020;
constexpr std::uint32_t kBulkTransfer = 0x220024;
constexpr std::uint32_t kCyclePort = 0x220028;
constexpr std::uint32_t kResetPipe = 0x22002C;
constexpr std::uint32_t kResetParentPort = 0x220030;
constexpr std::uint32_t kAbortPipe = 0x220044;
constexpr std::uint32_t kDirectTransfer = 0x22004B;
constexpr std::uint32_t kGetSpeed = 0x22004C;

// Bits of the request type.
constexpr std::uint8_t kToHost = 0x80;
constexpr std::uint8_t kVendor = 0x40;
constexpr std::uint8_t kForEndpoint = 0x02;

constexpr std::uint8_t kBulkRequest = 0x33;

// After an abort the driver hands the transfer back at once, if it ever does.
constexpr std::uint32_t kAbortGraceMs = 50;

// A read sends its area along. The part that traces and recordings keep is cleared, so that it does not
// depend on the frames before.
constexpr std::size_t kClearedBytes = 128;

constexpr std::size_t kRequestBufferBytes = kFx3HeaderBytes + kFx3RequestBytes;

std::span<std::uint8_t, kFx3HeaderBytes> HeaderOf(std::span<std::uint8_t> transfer) {
  return transfer.first<kFx3HeaderBytes>();
}

/// Data bytes in a count that includes the header.
std::uint32_t DataBytes(std::uint32_t returned) {
  return returned > kFx3HeaderBytes ? returned - static_cast<std::uint32_t>(kFx3HeaderBytes) : 0;
}

}  // namespace

struct CFx3Api::Request {
  std::uint8_t code;
  std::uint8_t type;
  std::uint16_t value = 0;
  std::uint16_t index = 0;
};

// ---- direct reads

bool Fx3DirectRead::Wait(std::uint32_t milliseconds) {
  return transfer_ && transfer_->Wait(milliseconds) == PendingControl::Waited::Done;
}

bool Fx3DirectRead::Finish(std::uint32_t* received) {
  *received = 0;
  if (!transfer_) return false;
  const DriverResult result = transfer_->Finish();
  if (!result.ok || result.bytes > bytes_) return false;
  *received = result.bytes;
  transfer_.reset();
  const Fx3TransferHeader header = Fx3TransferHeader::From(header_);
  return header.driverStatus == 0 && header.usbStatus == 0;
}

// ---- opening

CFx3Api::CFx3Api() : interfaceClass_(kFx3InterfaceClass) {}

bool CFx3Api::SetGuid(const GUID* interfaceClass) {
  if (interfaceClass == nullptr) return false;
  interfaceClass_ = *interfaceClass;
  return true;
}

bool CFx3Api::Open(LONG index) {
  Close();
  if (index < 0) return false;
  DriverHost& host = CurrentDriverHost();
  auto path = host.InterfacePath(interfaceClass_, static_cast<std::uint32_t>(index));
  if (!path) return false;
  DriverError error = DriverError::None;
  handle_ = host.Open(
      {.path = std::move(*path), .access = kAccessWrite, .share = kShareWrite, .flags = kOpenOverlapped},
      &error);
  return IsOpen();
}

bool CFx3Api::Probe(LONG index) {
  const bool answers = Open(index);
  Close();
  return answers;
}

bool CFx3Api::Close() {
  if (!IsOpen()) return false;
  handle_.reset();
  return true;
}

// ---- endpoint 0

DriverResult CFx3Api::Control(std::uint32_t code, std::span<const std::uint8_t> in,
                              std::span<std::uint8_t> out) {
  if (!IsOpen()) return DriverResult::Failed(DriverError::InvalidHandle);
  const DriverResult result = handle_->Control(code, in, out);
  if (result.ok && result.bytes > std::max(in.size(), out.size()))
    return DriverResult::Failed(DriverError::GeneralFailure);
  return result;
}

bool CFx3Api::ControlTransfer(std::span<std::uint8_t> transfer, std::uint32_t* returned) {
  const DriverResult result = Control(kControlTransfer, transfer, transfer);
  *returned = result.ok ? result.bytes : 0;
  return result.ok;
}

bool CFx3Api::VendorRequest(const Request& request, std::span<const std::uint8_t> out,
                            std::span<std::uint8_t> in, std::uint32_t* received) {
  *received = 0;
  if (out.size() > kFx3RequestBytes || in.size() > kFx3RequestBytes) return false;
  std::array<std::uint8_t, kRequestBufferBytes> transfer{};
  const Fx3TransferHeader header{.requestType = request.type,
                                 .request = request.code,
                                 .value = request.value,
                                 .index = request.index,
                                 .length = static_cast<std::uint16_t>(transfer.size()),
                                 .timeoutMs = kFx3TimeoutMs,
                                 .dataLength = kFx3RequestBytes};
  header.StoreTo(HeaderOf(transfer));
  const std::span data = std::span(transfer).subspan<kFx3HeaderBytes>();
  std::ranges::copy(out, data.begin());
  std::uint32_t returned = 0;
  if (!ControlTransfer(transfer, &returned)) return false;
  *received = DataBytes(returned);
  if (*received >= in.size()) std::copy_n(data.begin(), in.size(), in.begin());
  return true;
}

bool CFx3Api::BusWrite(std::uint16_t busAddress, std::span<const std::uint8_t> data) {
  std::uint32_t received = 0;
  return VendorRequest({0x30, kVendor, static_cast<std::uint16_t>(data.size()), busAddress}, data, {},
                       &received);
}

bool CFx3Api::BusRead(std::uint16_t busAddress, std::span<std::uint8_t> data, std::uint32_t* received) {
  std::uint32_t came = 0;
  // Bit 0 of a bus address says that the host reads.
  const bool done = VendorRequest({0x31, kToHost | kVendor, static_cast<std::uint16_t>(data.size()),
                                   static_cast<std::uint16_t>(busAddress | 1)},
                                  {}, data, &came);
  if (received != nullptr) *received = came;
  return done;
}

bool CFx3Api::BlockWrite(std::uint16_t index, std::span<const std::uint8_t> data) {
  std::uint32_t received = 0;
  return VendorRequest({0x37, kVendor, static_cast<std::uint16_t>(data.size()), index}, data, {}, &received);
}

bool CFx3Api::ReadDeviceInformation(std::span<std::uint8_t, kFx3RequestBytes> data) {
  std::uint32_t received = 0;
  return VendorRequest({0xB0, kToHost | kVendor}, {}, data, &received);
}

bool CFx3Api::ResetController() {
  std::uint32_t received = 0;
  return VendorRequest({0xC0, kVendor}, {}, {}, &received);
}

bool CFx3Api::StartFrame() {
  std::uint32_t received = 0;
  return VendorRequest({0xC2, kVendor | kForEndpoint}, {}, {}, &received);
}

// ---- bulk transfers

bool CFx3Api::WaitingTransfer(std::span<std::uint8_t> transfer, std::uint32_t* returned) {
  *returned = 0;
  if (!IsOpen()) return false;
  DriverError error = DriverError::None;
  const auto pending = handle_->BeginControl(kBulkTransfer, transfer, transfer, &error);
  if (!pending) return error == DriverError::None;
  auto waited = pending->Wait(kFx3TimeoutMs);
  if (waited == PendingControl::Waited::Timeout) {
    AbortPipe(kFx3ImageEndpoint);
    waited = pending->Wait(kAbortGraceMs);
  }
  if (waited != PendingControl::Waited::Done) return false;
  const DriverResult result = pending->Finish();
  if (!result.ok || result.bytes > transfer.size()) return false;
  *returned = result.bytes;
  return true;
}

bool CFx3Api::BulkRead(std::span<std::uint8_t> data, std::uint8_t endpoint, std::uint32_t* received) {
  return BulkReadAt(data, 0, data.size(), endpoint, received);
}

bool CFx3Api::BulkReadAt(std::span<std::uint8_t> area, std::size_t offset, std::size_t bytes,
                         std::uint8_t endpoint, std::uint32_t* received) {
  *received = 0;
  if (bytes == 0 || bytes > kFx3MaxBulkBytes) return false;
  if (offset > area.size() || bytes > area.size() - offset) return false;

  const std::size_t size = kFx3HeaderBytes + bytes;
  const bool inPlace = offset >= kFx3HeaderBytes;
  if (!inPlace && scratch_.size() < size) scratch_.resize(size);
  const std::span<std::uint8_t> transfer =
      inPlace ? area.subspan(offset - kFx3HeaderBytes, size) : std::span(scratch_).first(size);

  std::array<std::uint8_t, kFx3HeaderBytes> covered;
  std::ranges::copy(HeaderOf(transfer), covered.begin());
  std::ranges::fill(transfer.first(std::min(size, kClearedBytes)), std::uint8_t{0});
  const Fx3TransferHeader header{.requestType = kToHost,
                                 .request = kBulkRequest,
                                 .length = static_cast<std::uint16_t>(size),
                                 .timeoutMs = kFx3TimeoutMs,
                                 .endpoint = endpoint,
                                 .dataLength = static_cast<std::uint32_t>(bytes)};
  header.StoreTo(HeaderOf(transfer));
  std::uint32_t returned = 0;
  const bool done = WaitingTransfer(transfer, &returned);
  *received = DataBytes(returned);
  if (inPlace) {
    std::ranges::copy(covered, transfer.begin());
  } else {
    std::copy_n(transfer.begin() + kFx3HeaderBytes, *received,
                area.begin() + static_cast<std::ptrdiff_t>(offset));
  }
  return done;
}

std::unique_ptr<Fx3DirectRead> CFx3Api::StartDirectRead(std::span<std::uint8_t> data, std::uint8_t endpoint) {
  if (!IsOpen()) return nullptr;
  auto read = std::make_unique<Fx3DirectRead>();
  Fx3TransferHeader{.endpoint = endpoint}.StoreTo(read->header_);
  read->bytes_ = data.size();
  DriverError error = DriverError::None;
  read->transfer_ = handle_->BeginControl(kDirectTransfer, read->header_, data, &error);
  return read->transfer_ ? std::move(read) : nullptr;
}

// ---- pipes and ports

bool CFx3Api::AbortPipe(std::uint8_t endpoint) {
  return Control(kAbortPipe, {&endpoint, 1}, {}).ok;
}

bool CFx3Api::ResetPipe(std::uint8_t endpoint) {
  return Control(kResetPipe, {&endpoint, 1}, {}).ok;
}

bool CFx3Api::CyclePort() {
  return Control(kCyclePort, {}, {}).ok;
}

bool CFx3Api::ResetParentPort() {
  return Control(kResetParentPort, {}, {}).ok;
}

bool CFx3Api::GetSpeed(std::uint32_t* speed) {
  const std::array<std::uint8_t, 4> in{};
  std::array<std::uint8_t, 4> out{};
  const DriverResult result = Control(kGetSpeed, in, out);
  if (!result.ok || result.bytes != out.size()) return false;
  *speed = LoadLittle32(out.data());
  return true;
}

}  // namespace zel
