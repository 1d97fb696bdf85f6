#include "platform/FaultyDriverHost.h"

#include <random>

namespace zel {
namespace {

DriverError NoDevice(DriverCall::Kind kind) {
  const bool opens = kind == DriverCall::Kind::Open || kind == DriverCall::Kind::Interface;
  return opens ? DriverError::FileNotFound : DriverError::NotConnected;
}

/// What a fault leaves of a call that worked.
void Spoil(DriverFault::Kind kind, const DriverCall& call, DriverResult* result) {
  switch (kind) {
    case DriverFault::Kind::ShortByOne:
      result->bytes -= result->bytes > 0 ? 1 : 0;
      break;
    case DriverFault::Kind::Half:
      result->bytes /= 2;
      break;
    case DriverFault::Kind::TooMany:
      result->bytes = 0xFFFFFFFF;
      break;
    case DriverFault::Kind::Garbage: {
      std::minstd_rand garbage(7);
      for (std::uint8_t& byte : call.out) byte = static_cast<std::uint8_t>(garbage() >> 8);
      break;
    }
    default:
      break;
  }
}

}  // namespace

void FaultyDriverHost::Arm(std::optional<DriverFault> fault) {
  const std::lock_guard lock(mutex_);
  fault_ = fault;
  vanished_ = false;
  calls_ = 0;
}

std::uint32_t FaultyDriverHost::Calls() const {
  const std::lock_guard lock(mutex_);
  return calls_;
}

std::optional<DriverFault> FaultyDriverHost::Next() {
  const std::lock_guard lock(mutex_);
  const bool now = fault_ && calls_ == fault_->call;
  ++calls_;
  if (now && fault_->kind == DriverFault::Kind::Vanish) vanished_ = true;
  return now || vanished_ ? fault_ : std::nullopt;
}

DriverResult FaultyDriverHost::Intercept(DriverCall& call, const Forward& forward) {
  if (call.kind == DriverCall::Kind::Close || call.kind == DriverCall::Kind::Cancel) return forward();
  const std::optional<DriverFault> fault = Next();
  if (!fault) return forward();
  switch (fault->kind) {
    case DriverFault::Kind::Fail:
      return DriverResult::Failed(DriverError::GeneralFailure);
    case DriverFault::Kind::Vanish:
      return DriverResult::Failed(NoDevice(call.kind));
    case DriverFault::Kind::Timeout:
      Sleep(fault->milliseconds);
      return DriverResult::Failed(DriverError::Timeout);
    case DriverFault::Kind::Hang:
      Sleep(fault->milliseconds);
      return forward();
    default:
      break;
  }
  DriverResult result = forward();
  // What an overlapped transfer brings comes with its finish; until then the driver has the buffer.
  if (result.ok && call.kind != DriverCall::Kind::Begin) Spoil(fault->kind, call, &result);
  return result;
}

}  // namespace zel
