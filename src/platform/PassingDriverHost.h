#pragma once

#include "platform/DriverHost.h"

namespace zel {

/// Passes everything on to another host, which must outlive it: the base of hosts that change one thing.
class PassingDriverHost : public DriverHost {
 public:
  explicit PassingDriverHost(DriverHost& next) : next_(next) {}

  std::unique_ptr<DriverHandle> Open(const OpenRequest& request, DriverError* error) override {
    return next_.Open(request, error);
  }
  std::optional<std::u16string> InterfacePath(const GUID& interfaceClass, std::uint32_t index) override {
    return next_.InterfacePath(interfaceClass, index);
  }
  void Sleep(std::uint32_t milliseconds) override { next_.Sleep(milliseconds); }
  std::uint64_t Milliseconds() override { return next_.Milliseconds(); }
  void ShowMessage(std::u16string_view text) override { next_.ShowMessage(text); }
  void TellOnce(std::string_view line) override { next_.TellOnce(line); }
  void NoteRegister(RegisterAccess access, std::uint32_t address, std::uint32_t value) override {
    next_.NoteRegister(access, address, value);
  }

 private:
  DriverHost& next_;
};

}  // namespace zel
