#include "platform/posix/UsbTransfer.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "common/Assert.h"
#include "platform/Threads.h"

namespace zel {

UsbTransfer::UsbTransfer(UsbDevice& device) : device_(device) {
  for (Piece& piece : pieces_) piece.owner = this;
  device_.Add(*this);
}

UsbTransfer::~UsbTransfer() {
  Cancel(DriverError::Aborted);
  Wait(kForever);
  device_.Remove(*this);
}

DriverError UsbTransfer::StartBulk(std::uint8_t endpoint, std::span<std::uint8_t> data,
                                   std::uint32_t timeoutMs) {
  if (data.empty() || data.size() > 0xFFFFFFFFu) return DriverError::InvalidParameter;
  const std::lock_guard lock(mutex_);
  control_.clear();
  return Begin(endpoint, data, timeoutMs);
}

DriverError UsbTransfer::StartControl(const UsbSetup& setup, std::span<std::uint8_t> data,
                                      std::uint32_t timeoutMs) {
  if (data.size() > 0xFFFF) return DriverError::InvalidParameter;
  const std::lock_guard lock(mutex_);
  control_.resize(LIBUSB_CONTROL_SETUP_SIZE + data.size());
  libusb_fill_control_setup(control_.data(), setup.requestType, setup.request, setup.value, setup.index,
                            static_cast<std::uint16_t>(data.size()));
  const bool in = setup.requestType & LIBUSB_ENDPOINT_IN;
  controlReply_ = in ? data : std::span<std::uint8_t>();
  if (!in) std::ranges::copy(data, control_.begin() + LIBUSB_CONTROL_SETUP_SIZE);
  return Begin(0, control_, timeoutMs);
}

DriverError UsbTransfer::Begin(std::uint8_t endpoint, std::span<std::uint8_t> data, std::uint32_t timeoutMs) {
  Assert(underWay_ == 0, "underWay_ == 0");
  endpoint_ = endpoint;
  data_ = data;
  timeoutMs_ = timeoutMs;
  next_ = 0;
  moved_ = 0;
  error_ = DriverError::None;
  isEnding_ = isHalted_ = false;
  if (device_.IsUnplugged()) {
    End(DriverError::NotConnected);
  } else {
    SubmitWhatFits();
  }
  return underWay_ > 0 ? DriverError::None : error_;
}

void UsbTransfer::SubmitWhatFits() {
  for (Piece& piece : pieces_) {
    if (isEnding_ || next_ == data_.size()) return;
    if (!piece.isUnderWay && !Submit(piece)) return;
  }
}

bool UsbTransfer::Submit(Piece& piece) {
  if (!piece.transfer) piece.transfer.reset(libusb_alloc_transfer(0));
  libusb_transfer* const transfer = piece.transfer.get();
  const std::size_t size = control_.empty() ? std::min(data_.size() - next_, kPieceBytes) : data_.size();
  int problem = LIBUSB_ERROR_NO_MEM;
  if (transfer != nullptr) {
    if (control_.empty()) {
      libusb_fill_bulk_transfer(transfer, device_.Handle(), endpoint_, &data_[next_], static_cast<int>(size),
                                OnComplete, &piece, timeoutMs_);
    } else {
      libusb_fill_control_transfer(transfer, device_.Handle(), data_.data(), OnComplete, &piece, timeoutMs_);
    }
    problem = libusb_submit_transfer(transfer);
  }
  if (problem == LIBUSB_SUCCESS) {
    piece.isUnderWay = true;
    ++underWay_;
    next_ += size;
    return true;
  }
  // Without memory for one more, those under way make room when they end.
  if (problem != LIBUSB_ERROR_NO_MEM || underWay_ == 0) End(DriverErrorOfUsb(problem));
  return false;
}

void UsbTransfer::End(DriverError error) {
  isEnding_ = true;
  error_ = error;
  for (const Piece& piece : pieces_) {
    if (piece.isUnderWay) (void)libusb_cancel_transfer(piece.transfer.get());
  }
}

void LIBUSB_CALL UsbTransfer::OnComplete(libusb_transfer* transfer) {
  Piece& piece = *static_cast<Piece*>(transfer->user_data);
  piece.owner->Complete(piece);
}

void UsbTransfer::Complete(Piece& piece) {
  const std::lock_guard lock(mutex_);
  piece.isUnderWay = false;
  --underWay_;
  if (!isEnding_) {
    const libusb_transfer& transfer = *piece.transfer;
    moved_ += static_cast<std::uint32_t>(transfer.actual_length);
    isHalted_ = transfer.status == LIBUSB_TRANSFER_STALL;
    const int setup = control_.empty() ? 0 : static_cast<int>(LIBUSB_CONTROL_SETUP_SIZE);
    if (transfer.status != LIBUSB_TRANSFER_COMPLETED || transfer.actual_length < transfer.length - setup) {
      End(DriverErrorOfTransfer(transfer.status));
    } else {
      SubmitWhatFits();
    }
  }
  // Under the lock: a waiter that then destroys the transfer can't get ahead of this call.
  if (HasEnded()) ended_.notify_all();
}

bool UsbTransfer::Wait(std::uint32_t milliseconds) {
  std::unique_lock lock(mutex_);
  const auto hasEnded = [this] { return HasEnded(); };
  if (milliseconds != kForever)
    return ended_.wait_for(lock, std::chrono::milliseconds(milliseconds), hasEnded);
  ended_.wait(lock, hasEnded);
  return true;
}

DriverResult UsbTransfer::Result() {
  {
    const std::lock_guard lock(mutex_);
    if (!HasEnded()) return DriverResult::Failed(DriverError::Pending);
    const std::size_t replied = std::min<std::size_t>(moved_, controlReply_.size());
    if (!control_.empty())
      std::copy_n(control_.begin() + LIBUSB_CONTROL_SETUP_SIZE, replied, controlReply_.begin());
  }
  // Endpoint 0 recovers by itself.
  if (std::exchange(isHalted_, false) && control_.empty())
    (void)libusb_clear_halt(device_.Handle(), endpoint_);
  return {error_ == DriverError::None, moved_, error_};
}

void UsbTransfer::Cancel(DriverError reason, std::optional<std::uint8_t> endpoint) {
  const std::lock_guard lock(mutex_);
  if (HasEnded() || isEnding_ || (endpoint && *endpoint != endpoint_)) return;
  End(reason);
}

}  // namespace zel
