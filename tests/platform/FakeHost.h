#pragma once

#include <algorithm>
#include <functional>

#include "platform/DriverHost.h"

namespace zel::test {

/// A host, its handles and their transfers in one: what brings bytes fills the buffer, with 0xEE unless the
/// test gives another filling; writing and waiting fail, and opening does when it is told to.
class FakeHost : public DriverHost, public DriverHandle, public PendingControl {
 public:
  using In = std::span<const std::uint8_t>;
  using Out = std::span<std::uint8_t>;

  DriverError openError = DriverError::None;
  std::function<void(Out)> fill = [](Out out) { std::ranges::fill(out, std::uint8_t{0xEE}); };
  Out pendingOut;

  std::unique_ptr<DriverHandle> Open(const OpenRequest&, DriverError* error) override {
    *error = openError;
    return openError == DriverError::None ? std::make_unique<FakeHost>(*this) : nullptr;
  }
  std::optional<std::u16string> InterfacePath(const GUID&, std::uint32_t index) override {
    return index == 0 ? std::optional(u"\\\\?\\usb#1") : std::nullopt;
  }
  void Sleep(std::uint32_t) override {}
  std::uint64_t Milliseconds() override { return 7; }
  void ShowMessage(std::u16string_view) override {}

  DriverResult Control(std::uint32_t, In, Out out) override { return Fill(out); }
  std::unique_ptr<PendingControl> BeginControl(std::uint32_t, In, Out out, DriverError*) override {
    auto pending = std::make_unique<FakeHost>(*this);
    pending->pendingOut = out;
    return pending;
  }
  DriverResult Seek(std::uint64_t) override { return DriverResult::Done(0); }
  DriverResult Read(Out out) override { return Fill(out); }
  DriverResult Write(In) override { return DriverResult::Failed(DriverError::NotConnected); }

  Waited Wait(std::uint32_t) override { return Waited::Timeout; }
  DriverResult Finish() override { return Fill(pendingOut); }
  void Cancel() override {}

 private:
  DriverResult Fill(Out out) {
    fill(out);
    return DriverResult::Done(static_cast<std::uint32_t>(out.size()));
  }
};

}  // namespace zel::test
