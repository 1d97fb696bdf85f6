#include "platform/TracingDriverHost.h"

#include <algorithm>
#include <cstdio>
#include <span>
#include <utility>

#include "platform/Text.h"

namespace zel {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kShownBytes = 128;

std::string Hex(Bytes bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const std::uint8_t byte : bytes.first(std::min(bytes.size(), kShownBytes))) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

std::string CodeText(std::uint32_t code) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%06X", static_cast<unsigned>(code));
  return text;
}

}  // namespace

/// The members of one JSON object, in the order of the calls.
class JsonMembers {
 public:
  JsonMembers& Text(const char* name, std::string_view utf8) {
    Name(name) += '"';
    for (const char c : utf8) {
      if (c == '"' || c == '\\') {
        (text_ += '\\') += c;
      } else if (static_cast<unsigned char>(c) < 0x20) {
        const auto code = static_cast<std::uint8_t>(c);
        text_ += "\\u00" + Hex({&code, 1});
      } else {
        text_ += c;
      }
    }
    text_ += '"';
    return *this;
  }

  JsonMembers& Number(const char* name, std::uint64_t value) {
    Name(name) += std::to_string(value);
    return *this;
  }

  JsonMembers& Truth(const char* name, bool value) {
    Name(name) += value ? "true" : "false";
    return *this;
  }

  JsonMembers& Append(const JsonMembers& more) {
    if (!text_.empty() && !more.text_.empty()) text_ += ',';
    text_ += more.text_;
    return *this;
  }

  std::string Object() const { return '{' + text_ + '}'; }

 private:
  std::string& Name(const char* name) {
    if (!text_.empty()) text_ += ',';
    return ((text_ += '"') += name) += "\":";
  }

  std::string text_;
};

namespace {

/// What only calls of one kind have.
JsonMembers Subject(const DriverCall& call) {
  switch (call.kind) {
    case DriverCall::Kind::Open:
    case DriverCall::Kind::Interface:
      return JsonMembers().Text("path", ToUtf8(call.path));
    case DriverCall::Kind::Control:
    case DriverCall::Kind::Begin:
      return JsonMembers().Text("code", CodeText(call.code));
    case DriverCall::Kind::Wait:
      return JsonMembers().Number("milliseconds", call.code);
    case DriverCall::Kind::Seek:
      return JsonMembers().Number("position", call.position);
    default:
      return {};
  }
}

}  // namespace

TracingDriverHost::TracingDriverHost(DriverHost& inner, Sink sink)
    : InterceptingDriverHost(inner), sink_(std::move(sink)) {}

void TracingDriverHost::SetStep(const std::string& step) {
  // There and back, as a JSON text must be well-formed UTF-8.
  std::string wellFormed = ToUtf8(ToUtf16(step));
  const std::lock_guard lock(mutex_);
  step_ = std::move(wellFormed);
}

DriverResult TracingDriverHost::Intercept(DriverCall& call, const Forward& forward) {
  // The two buffers may be the same memory.
  const std::string in = Hex(call.in);
  const DriverResult result = forward();
  // While the driver still works it may be writing into the buffer.
  const bool atWork =
      call.kind == DriverCall::Kind::Begin || (!result.ok && result.error == DriverError::Pending);
  JsonMembers members;
  members.Text("call", DriverCallName(call.kind)).Append(Subject(call));
  members.Text("in", in).Text("out", Hex(atWork ? Bytes() : call.out));
  members.Number("in_size", call.in.size()).Number("out_size", call.out.size());
  members.Truth("ok", result.ok).Number("bytes", result.bytes);
  if (!result.ok) members.Text("error", DriverErrorText(result.error));
  WriteLine(members);
  return result;
}

void TracingDriverHost::NoteRegister(RegisterAccess access, std::uint32_t address, std::uint32_t value) {
  WriteLine(JsonMembers()
                .Number("register", address)
                .Number("value", value)
                .Text("access", access == RegisterAccess::Read ? "read" : "write"));
  InterceptingDriverHost::NoteRegister(access, address, value);
}

void TracingDriverHost::WriteLine(const JsonMembers& members) {
  const std::lock_guard lock(mutex_);
  sink_(JsonMembers().Text("step", step_).Append(members).Object());
}

}  // namespace zel
