#include "platform/InterceptingDriverHost.h"

#include <utility>

namespace zel {
namespace {

using Bytes = std::span<const std::uint8_t>;

}  // namespace

const char* DriverCallName(DriverCall::Kind kind) {
  constexpr const char* kNames[] = {"open",   "close", "control", "begin", "wait",     "finish",
                                    "cancel", "seek",  "read",    "write", "interface"};
  return kNames[static_cast<std::size_t>(kind)];
}

class InterceptingDriverHost::Transfer : public PendingControl {
 public:
  Transfer(InterceptingDriverHost& host, const DriverCall& begin, std::unique_ptr<PendingControl> next)
      : host_(host),
        handle_(begin.handle),
        number_(begin.transfer),
        out_(begin.out),
        next_(std::move(next)) {}

  Waited Wait(std::uint32_t milliseconds) override {
    DriverCall call = Call(DriverCall::Kind::Wait);
    call.code = milliseconds;
    const DriverResult result = host_.Intercept(call, [&] {
      switch (next_->Wait(milliseconds)) {
        case Waited::Done:
          return DriverResult::Done(0);
        case Waited::Timeout:
          return DriverResult::Failed(DriverError::Timeout);
        default:
          return DriverResult::Failed(DriverError::GeneralFailure);
      }
    });
    if (result.ok) return Waited::Done;
    return result.error == DriverError::Timeout ? Waited::Timeout : Waited::Failed;
  }

  DriverResult Finish() override {
    DriverCall call = Call(DriverCall::Kind::Finish);
    call.out = out_;
    return host_.Intercept(call, [this] { return next_->Finish(); });
  }

  void Cancel() override {
    DriverCall call = Call(DriverCall::Kind::Cancel);
    (void)host_.Intercept(call, [this] {
      next_->Cancel();
      return DriverResult::Done(0);
    });
  }

 private:
  DriverCall Call(DriverCall::Kind kind) const {
    return {.kind = kind, .handle = handle_, .transfer = number_};
  }

  InterceptingDriverHost& host_;
  const std::uint32_t handle_;
  const std::uint32_t number_;
  const std::span<std::uint8_t> out_;
  const std::unique_ptr<PendingControl> next_;
};

class InterceptingDriverHost::Handle : public DriverHandle {
 public:
  Handle(InterceptingDriverHost& host, std::uint32_t number, std::unique_ptr<DriverHandle> next)
      : host_(host), number_(number), next_(std::move(next)) {}

  ~Handle() override {
    DriverCall call{.kind = DriverCall::Kind::Close, .handle = number_};
    (void)host_.Intercept(call, [this] {
      next_.reset();
      return DriverResult::Done(0);
    });
  }

  DriverResult Control(std::uint32_t code, Bytes in, std::span<std::uint8_t> out) override {
    DriverCall call{.kind = DriverCall::Kind::Control, .handle = number_, .code = code, .in = in, .out = out};
    return host_.Intercept(call, [&] { return next_->Control(code, in, out); });
  }

  std::unique_ptr<PendingControl> BeginControl(std::uint32_t code, Bytes in, std::span<std::uint8_t> out,
                                               DriverError* error) override {
    DriverCall call{.kind = DriverCall::Kind::Begin,
                    .handle = number_,
                    .transfer = ++transfers_,
                    .code = code,
                    .in = in,
                    .out = out};
    std::unique_ptr<PendingControl> transfer;
    const DriverResult result = host_.Intercept(call, [&] {
      transfer = next_->BeginControl(code, in, out, error);
      return transfer ? DriverResult::Done(0) : DriverResult::Failed(*error);
    });
    if (result.ok) return std::make_unique<Transfer>(host_, call, std::move(transfer));
    *error = result.error;
    return nullptr;
  }

  DriverResult Seek(std::uint64_t position) override {
    DriverCall call{.kind = DriverCall::Kind::Seek, .handle = number_, .position = position};
    return host_.Intercept(call, [&] { return next_->Seek(position); });
  }

  DriverResult Read(std::span<std::uint8_t> out) override {
    DriverCall call{.kind = DriverCall::Kind::Read, .handle = number_, .out = out};
    return host_.Intercept(call, [&] { return next_->Read(out); });
  }

  DriverResult Write(Bytes in) override {
    DriverCall call{.kind = DriverCall::Kind::Write, .handle = number_, .in = in};
    return host_.Intercept(call, [&] { return next_->Write(in); });
  }

  std::string WriteRefusal() const override { return next_ ? next_->WriteRefusal() : std::string(); }

 private:
  InterceptingDriverHost& host_;
  const std::uint32_t number_;
  std::uint32_t transfers_ = 0;
  std::unique_ptr<DriverHandle> next_;
};

std::unique_ptr<DriverHandle> InterceptingDriverHost::Open(const OpenRequest& request, DriverError* error) {
  DriverCall call{.kind = DriverCall::Kind::Open, .handle = ++opens_, .open = &request, .path = request.path};
  std::unique_ptr<DriverHandle> handle;
  const DriverResult result = Intercept(call, [&] {
    handle = PassingDriverHost::Open(request, error);
    return handle ? DriverResult::Done(0) : DriverResult::Failed(*error);
  });
  *error = result.error;
  if (!result.ok) return nullptr;
  return std::make_unique<Handle>(*this, call.handle, std::move(handle));
}

std::optional<std::u16string> InterceptingDriverHost::InterfacePath(const GUID& interfaceClass,
                                                                    std::uint32_t index) {
  DriverCall call{.kind = DriverCall::Kind::Interface, .code = index, .interfaceClass = &interfaceClass};
  const DriverResult result = Intercept(call, [&] {
    auto path = PassingDriverHost::InterfacePath(interfaceClass, index);
    if (!path) return DriverResult::Failed(DriverError::FileNotFound);
    call.path = std::move(*path);
    return DriverResult::Done(0);
  });
  if (!result.ok) return std::nullopt;
  return std::move(call.path);
}

}  // namespace zel
