#include "transport/SectorDevice.h"

#include <chrono>

namespace zel {

bool SectorDevice::Open(const std::u16string& path, std::uint32_t share) {
  const Turn turn(turn_);
  handle_.reset();
  DriverError error = DriverError::None;
  handle_ = CurrentDriverHost().Open(
      {.path = path, .access = kAccessRead | kAccessWrite, .share = share, .flags = 0}, &error);
  return open_ = handle_ != nullptr;
}

void SectorDevice::Close() {
  const Turn turn(turn_);
  open_ = false;
  handle_.reset();
}

SectorDevice::Turn SectorDevice::TakeTurn(std::uint32_t milliseconds) {
  return Turn(turn_, std::chrono::milliseconds(milliseconds));
}

DriverResult SectorDevice::ReadAt(std::uint64_t position, std::span<std::uint8_t> out) {
  const Turn turn(turn_);
  if (!handle_) return DriverResult::Failed(DriverError::InvalidHandle);
  if (const DriverResult sought = handle_->Seek(position); !sought.ok) return sought;
  const DriverResult read = handle_->Read(out);
  return read.bytes <= out.size() ? read : DriverResult::Failed(DriverError::GeneralFailure);
}

bool SectorDevice::ReadSectorAt(std::uint64_t position, Sector& sector) {
  const DriverResult read = ReadAt(position, sector);
  return read.ok && read.bytes == sector.size();
}

bool SectorDevice::WriteSectorAt(std::uint64_t position, const Sector& sector) {
  const Turn turn(turn_);
  if (!handle_ || !handle_->Seek(position).ok) return false;
  const DriverResult written = handle_->Write(sector);
  return written.ok && written.bytes == sector.size();
}

std::string SectorDevice::WriteRefusal() {
  const Turn turn(turn_);
  return handle_ ? handle_->WriteRefusal() : std::string();
}

}  // namespace zel
