#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <vector>

#include "platform/posix/UsbDevice.h"

namespace zel {

struct UsbSetup {
  std::uint8_t requestType = 0;  ///< direction in bit 7
  std::uint8_t request = 0;
  std::uint16_t value = 0;
  std::uint16_t index = 0;
};

/// One transfer at a time between a device and memory, carried by the event thread. Large ones travel in
/// pieces, several under way at once: the system limits what it keeps for all devices together, and the bus
/// is not to wait for this process between two pieces. A piece that comes back short ends the transfer.
///
/// Device and memory must outlive it; destruction cancels and waits. Any thread may cancel and wait, one
/// thread starts and takes the result.
class UsbTransfer {
 public:
  explicit UsbTransfer(UsbDevice& device);
  ~UsbTransfer();
  UsbTransfer(const UsbTransfer&) = delete;
  UsbTransfer& operator=(const UsbTransfer&) = delete;

  /// The endpoint decides the direction. `timeoutMs` is for each piece, 0 none. None when it has started.
  DriverError StartBulk(std::uint8_t endpoint, std::span<std::uint8_t> data, std::uint32_t timeoutMs);
  /// On endpoint 0. At most 65535 bytes; the system allows 4096.
  DriverError StartControl(const UsbSetup& setup, std::span<std::uint8_t> data, std::uint32_t timeoutMs);

  /// True when it has ended within the time.
  bool Wait(std::uint32_t milliseconds);
  /// Bytes moved up to the end or the error; Pending when it has not ended. A pipe that the device has
  /// stalled is usable again afterwards.
  DriverResult Result();
  /// Without effect when it has ended or is on another endpoint.
  void Cancel(DriverError reason, std::optional<std::uint8_t> endpoint = {});

 private:
  static constexpr std::size_t kPieces = 4;  // under way at once
  static constexpr std::size_t kPieceBytes = 1 << 20;

  struct TransferFree {
    void operator()(libusb_transfer* transfer) const { libusb_free_transfer(transfer); }
  };
  struct Piece {
    UsbTransfer* owner = nullptr;
    std::unique_ptr<libusb_transfer, TransferFree> transfer;
    bool isUnderWay = false;
  };

  // With the lock held.
  DriverError Begin(std::uint8_t endpoint, std::span<std::uint8_t> data, std::uint32_t timeoutMs);
  void SubmitWhatFits();
  bool Submit(Piece& piece);
  void End(DriverError error);
  bool HasEnded() const { return underWay_ == 0 && (isEnding_ || next_ == data_.size()); }

  void Complete(Piece& piece);
  static void LIBUSB_CALL OnComplete(libusb_transfer* transfer);

  UsbDevice& device_;
  std::mutex mutex_;  ///< guards what follows
  std::condition_variable ended_;
  std::array<Piece, kPieces> pieces_;
  std::uint8_t endpoint_ = 0;
  std::span<std::uint8_t> data_;  ///< of a control transfer: all of `control_`
  std::uint32_t timeoutMs_ = 0;
  std::size_t next_ = 0;  ///< start of the first piece not submitted
  std::size_t underWay_ = 0;
  std::uint32_t moved_ = 0;
  DriverError error_ = DriverError::None;
  bool isEnding_ = false;  ///< no further piece is submitted, and what still comes does not count
  bool isHalted_ = false;
  std::vector<std::uint8_t> control_;     ///< setup packet and data; empty: a bulk transfer
  std::span<std::uint8_t> controlReply_;  ///< where the data of a control read go
};

}  // namespace zel
