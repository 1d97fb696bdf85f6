#include "platform/RecordingDriverHost.h"

#include <utility>

#include "platform/Text.h"

namespace zel {

std::uint64_t RecordingDriverHost::Milliseconds() {
  const std::uint64_t now = InterceptingDriverHost::Milliseconds();
  writer_.WriteClock(now);
  return now;
}

DriverResult RecordingDriverHost::Intercept(DriverCall& call, const Forward& forward) {
  SessionRecord record;
  record.request = SessionRequest::Of(call);
  record.handle = call.handle;
  record.result = forward();
  const DriverResult result = record.result;
  std::string path;
  if (call.kind == DriverCall::Kind::Interface) {
    path = ToUtf8(call.path);
    record.received = {reinterpret_cast<const std::uint8_t*>(path.data()), path.size()};
  } else if (call.kind != DriverCall::Kind::Begin && (result.ok || result.bytes > 0)) {
    // A begun transfer's area is the driver's until it is finished.
    record.received = call.out;
  }
  writer_.Write(std::move(record));
  return result;
}

}  // namespace zel
