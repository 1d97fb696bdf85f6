#pragma once

#include <atomic>
#include <functional>

#include "platform/PassingDriverHost.h"

namespace zel {

/// One driver call on its way through a host: the request. Members that a kind has no use for are 0 or empty.
struct DriverCall {
  enum class Kind : std::uint8_t {
    Open,
    Close,
    Control,
    Begin,
    Wait,
    Finish,
    Cancel,
    Seek,
    Read,
    Write,
    Interface,
  };

  Kind kind = Kind::Open;
  std::uint32_t handle = 0;    ///< counts the host's opens from 1; 0 in interface lookups
  std::uint32_t transfer = 0;  ///< counts the handle's begun transfers from 1
  std::uint32_t code = 0;      ///< of a control or begin; wait: milliseconds; interface: index
  std::uint64_t position = 0;  ///< of a seek
  const OpenRequest* open = nullptr;
  const GUID* interfaceClass = nullptr;
  std::span<const std::uint8_t> in = {};
  std::span<std::uint8_t> out = {};  ///< a transfer's is given in its begin and in its finish
  std::u16string path = {};          ///< of an open; of an interface lookup once it was answered
};

/// "open", "close", "control", "begin", "wait", "finish", "cancel", "seek", "read", "write", "interface".
const char* DriverCallName(DriverCall::Kind kind);

/// Sends every driver call, on whatever handle, through one function. Any thread. Must outlive every handle
/// opened through it.
class InterceptingDriverHost : public PassingDriverHost {
 public:
  using PassingDriverHost::PassingDriverHost;

  std::unique_ptr<DriverHandle> Open(const OpenRequest& request, DriverError* error) override;
  std::optional<std::u16string> InterfacePath(const GUID& interfaceClass, std::uint32_t index) override;

 protected:
  /// Makes the call at the next host. Not more than once.
  using Forward = std::function<DriverResult()>;

  /// Answers a call, mostly with what `forward` returns. A wait that is over answers done, one that isn't
  /// Timeout; an open or begin that is answered done without forwarding gives a handle or transfer of which
  /// only this function knows. A handle is closed at the next host also when this does not forward it.
  virtual DriverResult Intercept(DriverCall& call, const Forward& forward) = 0;

 private:
  class Handle;
  class Transfer;

  std::atomic<std::uint32_t> opens_{0};
};

}  // namespace zel
