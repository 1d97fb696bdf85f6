#pragma once

#include <cstdint>
#include <mutex>
#include <optional>

#include "platform/InterceptingDriverHost.h"

namespace zel {

/// What goes wrong, and with which driver call.
struct DriverFault {
  enum class Kind {
    Fail,        ///< general failure; nothing reaches the next host
    ShortByOne,  ///< one byte less than came
    Half,        ///< half of the bytes that came
    TooMany,     ///< claims 0xFFFFFFFF bytes
    Garbage,     ///< all bytes came, but none of them means anything
    Timeout,     ///< sleeps, then fails with a time-out; nothing reaches the next host
    Hang,        ///< sleeps, then works
    Vanish,      ///< this call and all later ones find no device, until `Restore`
  };

  Kind kind = Kind::Fail;
  std::uint32_t call = 0;           ///< the n-th call from now over all handles, from 0
  std::uint32_t milliseconds = 10;  ///< of Timeout and Hang; the next host sleeps
};

/// Passes everything on to another host and lets one driver call go wrong. Closing and cancelling count as no
/// call, as nobody would learn that they failed. Any thread.
class FaultyDriverHost : public InterceptingDriverHost {
 public:
  using InterceptingDriverHost::InterceptingDriverHost;

  /// Sets the fault that comes, or none, plugs a vanished device in again and counts calls from 0.
  void Arm(std::optional<DriverFault> fault);
  /// Nothing goes wrong any more.
  void Restore() { Arm(std::nullopt); }

  std::uint32_t Calls() const;  ///< since `Arm`

 protected:
  DriverResult Intercept(DriverCall& call, const Forward& forward) override;

 private:
  /// The fault that befalls the call that comes now.
  std::optional<DriverFault> Next();

  mutable std::mutex mutex_;
  std::optional<DriverFault> fault_;
  bool vanished_ = false;
  std::uint32_t calls_ = 0;
};

}  // namespace zel
