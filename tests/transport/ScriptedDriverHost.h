#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/DriverHost.h"

namespace zel::test {

/// A driver that writes down every call and answers like a camera behind the USB driver, or as a test scripts
/// it. Its log, separated by "; ": "open PATH ACCESS SHARE"; "> BYTES" for a 64-byte packet written to pipe 0
/// with 222051, up to its last byte that is not zero; "<" for 64 bytes read from pipe 1 with 22204E; any
/// other control as "CODE IN-BYTES -> SIZE", a packet as "CODE IN-BYTES : BYTES -> SIZE"; "@POSITION SIZE"
/// for a read of a drive, "@POSITION: BYTES" for a write, where "+OFFSET" stands for three zeros and more;
/// "sleep MS", which is how time passes; "write ADDRESS=VALUE", "read ADDRESS=VALUE"; "message TEXT".
class ScriptedDriverHost : public DriverHost {
 public:
  enum Fault { Fails, Short, Long };

  std::function<bool(const std::u16string&)> present = [](const std::u16string&) { return true; };
  std::map<std::uint8_t, std::uint16_t> registers;  ///< what reads find when there is no `reply`
  std::optional<std::vector<std::uint8_t>> reply;   ///< the second reply packet; the first is garbage
  std::map<std::uint64_t, std::vector<std::uint8_t>> sectors;  ///< what reads of a drive find, by position
  /// What the camera behind a drive does.
  std::function<void(std::uint64_t position, std::vector<std::uint8_t> data)> takeWrite = [](auto, auto) {};
  std::function<void(std::uint64_t position, std::vector<std::uint8_t>& data)> beforeRead = [](auto, auto&) {
  };
  std::optional<int> faultAt;  ///< n-th transfer from now, from 0
  Fault fault = Fails;
  bool logTransfers = true;
  int openHandles = 0;

  std::string TakeLog() { return std::exchange(log_, {}); }

  std::unique_ptr<DriverHandle> Open(const OpenRequest& request, DriverError* error) override {
    Note("open ", Ascii(request.path) + Format(" %X %u", request.access, request.share));
    *error = DriverError::FileNotFound;
    return present(request.path) ? std::make_unique<Handle>(*this) : nullptr;
  }
  std::optional<std::u16string> InterfacePath(const GUID&, std::uint32_t) override { return std::nullopt; }
  void Sleep(std::uint32_t ms) override {
    Note("sleep", Format(" %u", ms));
    now_ += ms;
  }
  std::uint64_t Milliseconds() override { return now_; }
  void ShowMessage(std::u16string_view text) override { Note("message ", Ascii(text)); }
  void NoteRegister(RegisterAccess access, std::uint32_t address, std::uint32_t value) override {
    Note(access == RegisterAccess::Read ? "read" : "write", Format(" %X=%X", address, value));
  }

 private:
  class Handle : public DriverHandle {
   public:
    explicit Handle(ScriptedDriverHost& host) : host_(host) { ++host_.openHandles; }
    ~Handle() override { --host_.openHandles; }

    DriverResult Control(std::uint32_t code, std::span<const std::uint8_t> in,
                         std::span<std::uint8_t> out) override {
      return host_.Control(code, in, out);
    }
    std::unique_ptr<PendingControl> BeginControl(std::uint32_t, std::span<const std::uint8_t>,
                                                 std::span<std::uint8_t>, DriverError*) override {
      return nullptr;
    }
    DriverResult Seek(std::uint64_t position) override {
      position_ = position;
      return host_.Outcome(0);
    }
    DriverResult Read(std::span<std::uint8_t> out) override {
      host_.NoteTransfer("", Format("@%llX %zu", static_cast<unsigned long long>(position_), out.size()));
      auto& sector = host_.sectors[position_];
      host_.beforeRead(position_, sector);
      const std::size_t size = std::min(sector.size(), out.size());
      std::copy_n(sector.begin(), size, out.begin());
      return host_.Outcome(size);
    }
    DriverResult Write(std::span<const std::uint8_t> in) override {
      host_.NoteTransfer("", Format("@%llX:", static_cast<unsigned long long>(position_)) + Sparse(in));
      const DriverResult result = host_.Outcome(in.size());
      if (result.ok) host_.takeWrite(position_, {in.begin(), in.end()});
      return result;
    }

   private:
    ScriptedDriverHost& host_;
    std::uint64_t position_ = 0;
  };

  DriverResult Control(std::uint32_t code, std::span<const std::uint8_t> in, std::span<std::uint8_t> out) {
    const bool packet = in.size() == 4 && in[1] == 0 && in[2] == 0 && in[3] == 0 && out.size() == 64;
    if (packet && code == 0x222051 && in[0] == 0) {
      NoteTransfer(">", Hex(out));
      address_ = out[1];
      replies_ = 0;
    } else if (packet && code == 0x22204E && in[0] == 1) {
      NoteTransfer("<", "");
      std::fill(out.begin(), out.end(), std::uint8_t{0xEE});
      const std::uint16_t value = registers[address_];
      const auto held = reply.value_or(
          std::vector{static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)});
      if (++replies_ == 2) std::copy(held.begin(), held.end(), out.begin());
    } else {
      NoteTransfer("", Format("%X", code) + Hex(in) + (packet ? std::string(" :").append(Hex(out)) : "") +
                           Format(" -> %u", static_cast<unsigned>(out.size())));
    }
    return Outcome(out.size());
  }

  DriverResult Outcome(std::size_t bytes) {
    if (faultAt && (*faultAt)-- == 0) {
      faultAt.reset();
      if (fault == Fails) return DriverResult::Failed(DriverError::GeneralFailure);
      bytes += fault == Short ? -1 : 1;
    }
    return DriverResult::Done(static_cast<std::uint32_t>(bytes));
  }

  void NoteTransfer(const char* what, const std::string& rest) {
    if (logTransfers) Note(what, rest);
  }
  void Note(const char* what, const std::string& rest) {
    if (!log_.empty()) log_ += "; ";
    log_.append(what).append(rest);
  }

  template <class... Values>
  static std::string Format(const char* format, Values... values) {
    char text[80];
    std::snprintf(text, sizeof(text), format, values...);
    return text;
  }
  static std::string Ascii(std::u16string_view text) { return {text.begin(), text.end()}; }
  static std::string Hex(std::span<const std::uint8_t> bytes) {
    std::string text;
    while (!bytes.empty() && bytes.back() == 0) bytes = bytes.first(bytes.size() - 1);
    for (const std::uint8_t byte : bytes) text += Format(" %02X", unsigned{byte});
    return text;
  }

  static std::string Sparse(std::span<const std::uint8_t> bytes) {
    std::string text;
    for (std::size_t n = 0, next = 0; n < bytes.size(); ++n) {
      if (bytes[n] == 0) continue;
      if (n - next > 2) text += Format(" +%zu", next = n);
      text += Hex(bytes.subspan(next, n + 1 - next));
      next = n + 1;
    }
    return text;
  }

  std::string log_;
  std::uint64_t now_ = 0;
  std::uint8_t address_ = 0;
  int replies_ = 0;
};

}  // namespace zel::test
