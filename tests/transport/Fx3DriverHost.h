#pragma once

#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "common/BytePacking.h"
#include "platform/DriverHost.h"

namespace zel::test {

/// A driver that writes down every call and answers like a camera behind the FX3 controller's driver. Its
/// log, separated by blanks: "(" and ")" for open and close, "wADDRESS:BYTES" for a bus write, "rADDRESS:"
/// for a bus read of 2 bytes, "CODE:BYTES" for other vendor requests and driver controls, "bCOUNT" for a bulk
/// read,
/// "!MS" for a wait that times out; "write ADDRESS=VALUE", "read ADDRESS=VALUE"; "message TEXT".
class Fx3DriverHost : public DriverHost {
 public:
  enum Fault { Fails, Short, Long };  ///< one byte too few, one more than the buffer has

  std::function<bool(std::uint32_t)> present = [](std::uint32_t) { return true; };
  std::map<unsigned, unsigned> registers, fpga;
  std::array<std::uint8_t, 64> frameHeader{};
  std::function<std::uint8_t(std::size_t)> image = Pattern;  ///< bytes by their place in it
  std::optional<int> faultAt;                                ///< n-th transfer from now, from 0
  Fault fault = Fails;
  int stalls = 0;  ///< so many waits time out from now on
  int openHandles = 0;
  std::vector<std::uint8_t> lastIn;  ///< input of the last transfer, its first 128 bytes
  std::uint32_t usbStatus = 0;       ///< that a direct transfer leaves in its header

  static std::uint8_t Pattern(std::size_t place) {
    return static_cast<std::uint8_t>(place * 31 + (place >> 11));
  }
  void SetImage(std::uint32_t bytes, std::uint8_t kind = 0) {
    frameHeader[0] = kind;
    StoreLittle32(&frameHeader[16], bytes);
  }
  std::string TakeLog() { return std::exchange(log_, {}); }

  std::unique_ptr<DriverHandle> Open(const OpenRequest& request, DriverError*) override {
    const bool asked = request.access == 0x40000000 && request.share == 2 && request.flags == 0x40000000;
    Note(asked ? "(" : "opened otherwise");
    return std::make_unique<Handle>(*this);
  }
  std::optional<std::u16string> InterfacePath(const GUID& guid, std::uint32_t index) override {
    if (guid.Data1 != 0x328184C5 || guid.Data4[7] != 0x39 || !present(index)) return {};
    return u"fx3";
  }
  void Sleep(std::uint32_t) override {}
  std::uint64_t Milliseconds() override { return 0; }
  void ShowMessage(std::u16string_view text) override {
    Note("message ", std::string(text.begin(), text.end()));
  }
  void NoteRegister(RegisterAccess access, std::uint32_t address, std::uint32_t value) override {
    Note(access == RegisterAccess::Read ? "read " : "write ", Hex(address), "=", Hex(value));
  }

 private:
  class Handle : public DriverHandle {
   public:
    explicit Handle(Fx3DriverHost& host) : host_(host) { ++host_.openHandles; }
    ~Handle() override {
      --host_.openHandles;
      host_.Note(")");
    }
    DriverResult Control(std::uint32_t code, std::span<const std::uint8_t> in,
                         std::span<std::uint8_t> out) override {
      if (code == 0x220020) return host_.Vendor(in, out.subspan(38));
      host_.Note(Hex(code), ":", Bytes(in));
      return host_.Outcome(out.size(), out.size());
    }
    std::unique_ptr<PendingControl> BeginControl(std::uint32_t code, std::span<const std::uint8_t> in,
                                                 std::span<std::uint8_t> out, DriverError*) override {
      return std::make_unique<Pending>(host_, host_.Bulk(code == 0x220024 ? 38 : 0, in, out));
    }
    DriverResult Seek(std::uint64_t) override { return DriverResult::Failed(DriverError::NotSupported); }
    DriverResult Read(std::span<std::uint8_t>) override { return Seek(0); }
    DriverResult Write(std::span<const std::uint8_t>) override { return Seek(0); }

   private:
    Fx3DriverHost& host_;
  };

  class Pending : public PendingControl {
   public:
    Pending(Fx3DriverHost& host, DriverResult result) : host_(host), result_(result) {}
    Waited Wait(std::uint32_t milliseconds) override {
      if (host_.stalls == 0) return Waited::Done;
      --host_.stalls;
      host_.Note("!", std::to_string(milliseconds));
      return Waited::Timeout;
    }
    DriverResult Finish() override { return result_; }
    void Cancel() override {}

   private:
    Fx3DriverHost& host_;
    const DriverResult result_;
  };

  DriverResult Vendor(std::span<const std::uint8_t> in, std::span<std::uint8_t> data) {
    lastIn.assign(in.begin(), in.end());
    const unsigned request = in[0] * 256u + in[1], index = in[4], word = data[0] * 256u + data[1];
    const std::size_t count = in[2];
    if (request == 0xC031) {
      Note("r", Hex(index), ":");
      const unsigned found = index == 0x41 ? fpga[address_] : registers[address_];
      data[0] = ByteOf(found, 1);
      data[1] = ByteOf(found, 0);
      return Outcome(38 + count, 102);
    }
    Note(request == 0x4030 ? "w" + Hex(index) : Hex(request), ":", Bytes(data.first(count)));
    if (request == 0x4030) {
      address_ = index == 0x40 ? data[0] : word;
      if (index == 0x40 && count == 3) fpga[data[0]] = data[2];
      if (index != 0x40 && count == 4) registers[word] = data[2] * 256u + data[3];
    }
    if (request == 0x42C2) place_.reset();
    return Outcome(102, 102);
  }

  DriverResult Bulk(std::size_t header, std::span<const std::uint8_t> in, std::span<std::uint8_t> out) {
    lastIn.assign(in.begin(),
                  in.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(in.size(), 128)));
    const std::span<std::uint8_t> data = out.subspan(header);
    Note("b", Hex(static_cast<unsigned>(data.size())));
    if (!place_) {
      std::copy_n(frameHeader.begin(), std::min(data.size(), frameHeader.size()), data.begin());
      place_ = 0;
    } else {
      for (std::uint8_t& byte : data) byte = image((*place_)++);
    }
    if (header == 0) StoreLittle32(const_cast<std::uint8_t*>(&in[18]), usbStatus);
    return Outcome(out.size(), out.size());
  }

  DriverResult Outcome(std::size_t bytes, std::size_t size) {
    if (faultAt && (*faultAt)-- == 0) {
      faultAt.reset();
      if (fault == Fails) return DriverResult::Failed(DriverError::GeneralFailure);
      bytes = fault == Short ? bytes - 1 : size + 1;
    }
    return DriverResult::Done(static_cast<std::uint32_t>(bytes));
  }

  template <class... Parts>
  void Note(const Parts&... parts) {
    if (!log_.empty()) log_ += ' ';
    (log_.append(parts), ...);
  }
  static std::string Hex(unsigned value) {
    const std::string digits = Bytes(std::array{ByteOf(value, 2), ByteOf(value, 1), ByteOf(value, 0)});
    return digits.substr(std::min(digits.find_first_not_of('0'), digits.size() - 1));
  }
  static std::string Bytes(std::span<const std::uint8_t> bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes)
      text += {"0123456789ABCDEF"[byte >> 4], "0123456789ABCDEF"[byte & 15]};
    return text;
  }

  std::string log_;
  unsigned address_ = 0;
  std::optional<std::size_t> place_ = 0;  ///< of the next image byte; none: the header comes first
};

}  // namespace zel::test
