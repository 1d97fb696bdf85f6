#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace zel {

constexpr std::size_t kFx3HeaderBytes = 38;

/// What precedes the data in every transfer buffer of the controller's driver: little-endian, packed, the
/// data right behind it.
struct Fx3TransferHeader {
  std::uint8_t requestType = 0;  ///< recipient in bits 0..1, type in bits 5..6, direction in bit 7
  std::uint8_t request = 0;
  std::uint16_t value = 0;
  std::uint16_t index = 0;
  std::uint16_t length = 0;
  std::uint32_t timeoutMs = 0;
  std::uint8_t endpoint = 0;
  std::uint32_t driverStatus = 0;  ///< written by the driver, as the next one
  std::uint32_t usbStatus = 0;
  std::uint32_t dataLength = 0;

  void StoreTo(std::span<std::uint8_t, kFx3HeaderBytes> bytes) const;
  static Fx3TransferHeader From(std::span<const std::uint8_t, kFx3HeaderBytes> bytes);
};

}  // namespace zel
