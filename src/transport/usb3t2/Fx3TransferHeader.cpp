#include "transport/usb3t2/Fx3TransferHeader.h"

#include <algorithm>

#include "common/BytePacking.h"

namespace zel {
namespace {

// Bytes that have no field here, the reserved one and the isochronous packet, are 0.
enum Offset : std::size_t {
  kRequestType = 0,
  kRequest = 1,
  kValue = 2,
  kIndex = 4,
  kLength = 6,
  kTimeout = 8,
  kEndpoint = 13,
  kDriverStatus = 14,
  kUsbStatus = 18,
  kDataOffset = 30,
  kDataLength = 34,
};

void StoreLittle16(std::uint8_t* out, std::uint16_t value) {
  out[0] = ByteOf(value, 0);
  out[1] = ByteOf(value, 1);
}

std::uint16_t LoadLittle16(const std::uint8_t* in) {
  return FromBytes16(in[0], in[1]);
}

}  // namespace

void Fx3TransferHeader::StoreTo(std::span<std::uint8_t, kFx3HeaderBytes> bytes) const {
  std::ranges::fill(bytes, std::uint8_t{0});
  std::uint8_t* const out = bytes.data();
  out[kRequestType] = requestType;
  out[kRequest] = request;
  StoreLittle16(out + kValue, value);
  StoreLittle16(out + kIndex, index);
  StoreLittle16(out + kLength, length);
  StoreLittle32(out + kTimeout, timeoutMs);
  out[kEndpoint] = endpoint;
  StoreLittle32(out + kDriverStatus, driverStatus);
  StoreLittle32(out + kUsbStatus, usbStatus);
  StoreLittle32(out + kDataOffset, kFx3HeaderBytes);
  StoreLittle32(out + kDataLength, dataLength);
}

Fx3TransferHeader Fx3TransferHeader::From(std::span<const std::uint8_t, kFx3HeaderBytes> bytes) {
  const std::uint8_t* const in = bytes.data();
  return {.requestType = in[kRequestType],
          .request = in[kRequest],
          .value = LoadLittle16(in + kValue),
          .index = LoadLittle16(in + kIndex),
          .length = LoadLittle16(in + kLength),
          .timeoutMs = LoadLittle32(in + kTimeout),
          .endpoint = in[kEndpoint],
          .driverStatus = LoadLittle32(in + kDriverStatus),
          .usbStatus = LoadLittle32(in + kUsbStatus),
          .dataLength = LoadLittle32(in + kDataLength)};
}

}  // namespace zel
