#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <string>

#include "platform/DriverHost.h"
#include "platform/Mutex.h"

namespace zel {

constexpr std::size_t kSectorBytes = 512;
using Sector = std::array<std::uint8_t, kSectorBytes>;

/// One handle to a camera that the system shows as a disk or a volume: transfers at byte positions from its
/// start, each a seek and a read or write.
/// Threads: any; transfers take turns, as a frame read that outlives its capture may still be in the driver.
class SectorDevice {
 public:
  using Turn = std::unique_lock<std::recursive_timed_mutex>;

  /// For reading and writing; closes what was open before. False when that path can't be opened.
  bool Open(const std::u16string& path, std::uint32_t share = kShareRead | kShareWrite);
  void Close();
  bool IsOpen() const { return open_; }  ///< at once

  /// Keeps other threads out as long as it lives, for transfers that belong together. The second form gives
  /// up, owning nothing, when another thread keeps the device longer.
  Turn TakeTurn() { return Turn(turn_); }
  Turn TakeTurn(std::uint32_t milliseconds);

  /// May bring less than asked for; a driver that claims more has failed.
  DriverResult ReadAt(std::uint64_t position, std::span<std::uint8_t> out);
  /// Count only when all 512 bytes moved.
  bool ReadSectorAt(std::uint64_t position, Sector& sector);
  bool WriteSectorAt(std::uint64_t position, const Sector& sector);
  /// Why the system lets nothing be written, in words; empty when it does, or nothing was written yet.
  std::string WriteRefusal();

 private:
  ReturningMutex<std::recursive_timed_mutex> turn_;
  std::unique_ptr<DriverHandle> handle_;  ///< null: closed
  std::atomic<bool> open_ = false;        ///< told without a turn
};

}  // namespace zel
