#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "platform/DriverHost.h"
#include "transport/usb3t2/Fx3TransferHeader.h"

namespace zel {

constexpr std::uint8_t kFx3ImageEndpoint = 0x81;
constexpr std::size_t kFx3RequestBytes = 64;  ///< data area of a vendor request
constexpr std::size_t kFx3MaxBulkBytes = 0x4000000;
constexpr std::uint32_t kFx3TimeoutMs = 3000;

/// A bulk transfer that the driver moves straight into the caller's buffer. The buffer and the open
/// `CFx3Api` must outlive it; destruction cancels what has not finished.
class Fx3DirectRead {
 public:
  /// True when the transfer has ended within the time.
  bool Wait(std::uint32_t milliseconds);
  /// Does not wait. True when all went well for the driver and on the bus; `received` gets the bytes moved.
  bool Finish(std::uint32_t* received);

 private:
  friend class CFx3Api;
  std::array<std::uint8_t, kFx3HeaderBytes> header_{};
  std::size_t bytes_ = 0;
  std::unique_ptr<PendingControl> transfer_;  ///< goes before the header that it uses
};

/// One handle to a camera's FX3 controller, found as the n-th device of an interface class. Operations
/// return false when the handle is closed or the driver refuses; a driver that claims to have moved more than
/// it was given has failed. One thread at a time.
class CFx3Api {
 public:
  CFx3Api();

  /// Another interface class than the controller's usual one; false for null.
  bool SetGuid(const GUID* interfaceClass);
  bool Open(LONG index);  ///< closes what was open before
  bool Probe(LONG index);
  bool Close();  ///< false when it was closed already
  bool IsOpen() const { return handle_ != nullptr; }

  /// A transfer on endpoint 0, header and data in one buffer; `returned` counts both.
  bool ControlTransfer(std::span<std::uint8_t> transfer, std::uint32_t* returned);

  // Vendor requests, each with at most 64 bytes.
  bool BusWrite(std::uint16_t busAddress, std::span<const std::uint8_t> data);
  /// A reply shorter than `data` leaves it untouched and still succeeds; `received` (may be null) gets the
  /// bytes that came.
  bool BusRead(std::uint16_t busAddress, std::span<std::uint8_t> data, std::uint32_t* received = nullptr);
  bool BlockWrite(std::uint16_t index, std::span<const std::uint8_t> data);
  bool ReadDeviceInformation(std::span<std::uint8_t, kFx3RequestBytes> data);
  bool ResetController();
  bool StartFrame();

  /// Up to 0x4000000 bytes; `received` gets the bytes that came.
  bool BulkRead(std::span<std::uint8_t> data, std::uint8_t endpoint, std::uint32_t* received);
  /// The same into `area` from `offset` on. With enough bytes before it the data is not copied: the driver's
  /// header borrows their place meanwhile.
  bool BulkReadAt(std::span<std::uint8_t> area, std::size_t offset, std::size_t bytes, std::uint8_t endpoint,
                  std::uint32_t* received);
  /// Null when the driver refuses.
  std::unique_ptr<Fx3DirectRead> StartDirectRead(std::span<std::uint8_t> data, std::uint8_t endpoint);

  bool AbortPipe(std::uint8_t endpoint);
  bool ResetPipe(std::uint8_t endpoint);
  bool CyclePort();
  bool ResetParentPort();
  bool GetSpeed(std::uint32_t* speed);

 private:
  struct Request;

  DriverResult Control(std::uint32_t code, std::span<const std::uint8_t> in, std::span<std::uint8_t> out);
  /// Sends `out` and receives into `in`; `received` gets the data bytes that the driver reported.
  bool VendorRequest(const Request& request, std::span<const std::uint8_t> out, std::span<std::uint8_t> in,
                     std::uint32_t* received);
  bool WaitingTransfer(std::span<std::uint8_t> transfer, std::uint32_t* returned);

  GUID interfaceClass_;
  std::unique_ptr<DriverHandle> handle_;  ///< null: closed
  std::vector<std::uint8_t> scratch_;     ///< for bulk reads that need a buffer of their own
};

}  // namespace zel
