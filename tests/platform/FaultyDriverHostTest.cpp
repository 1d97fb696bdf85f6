#include "platform/FaultyDriverHost.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/FakeHost.h"

namespace zel {
namespace {

using Kind = DriverFault::Kind;

/// Opens, looks up, reads four bytes twice and waits for a transfer; each answer in a word or number.
std::string Calls(DriverHost& host) {
  DriverError error = DriverError::None;
  const auto handle = host.Open({u"camera"}, &error);
  std::string log = DriverErrorText(error);
  log += host.InterfacePath(GUID{}, 0) ? ", found" : ", lost";
  if (!handle) return log;
  for (int n = 0; n < 2; ++n) {
    std::vector<std::uint8_t> area(4);
    const DriverResult result = handle->Read(area);
    log += ", " + (result.ok ? std::to_string(result.bytes) : DriverErrorText(result.error));
    if (area != std::vector<std::uint8_t>(4, 0xEE)) log += area[0] == 0 ? " untouched" : " garbage";
  }
  std::vector<std::uint8_t> area(4);
  const auto transfer = handle->BeginControl(1, {}, area, &error);
  if (!transfer) return log + ", no transfer: " + DriverErrorText(error);
  log += ", wait " + std::to_string(static_cast<int>(transfer->Wait(1)));
  return log + ", " + std::to_string(transfer->Finish().bytes);
}

TEST(FaultyHost, SpoilsTheCallItIsToldTo) {
  class Sleepy : public test::FakeHost {
   public:
    void Sleep(std::uint32_t milliseconds) override { slept += milliseconds; }
    std::uint32_t slept = 0;
  };
  const struct {
    Kind kind;
    std::uint32_t call;
    const char* log;
  } rows[] = {
      {Kind::Fail, 99, "no error, found, 4, 4, wait 1, 4"},
      {Kind::Fail, 0, "general failure, found"},
      {Kind::Fail, 1, "no error, lost, 4, 4, wait 1, 4"},
      {Kind::Fail, 3, "no error, found, 4, general failure untouched, wait 1, 4"},
      {Kind::Fail, 4, "no error, found, 4, 4, no transfer: general failure"},
      {Kind::Fail, 5, "no error, found, 4, 4, wait 2, 4"},
      {Kind::ShortByOne, 2, "no error, found, 3, 4, wait 1, 4"},
      {Kind::Half, 6, "no error, found, 4, 4, wait 1, 2"},
      {Kind::TooMany, 2, "no error, found, 4294967295, 4, wait 1, 4"},
      {Kind::Garbage, 3, "no error, found, 4, 4 garbage, wait 1, 4"},
      {Kind::Timeout, 2, "no error, found, time-out untouched, 4, wait 1, 4"},
      {Kind::Hang, 2, "no error, found, 4, 4, wait 1, 4"},
      {Kind::Vanish, 0, "not found, lost"},
      {Kind::Vanish, 2,
       "no error, found, not connected untouched, not connected untouched, no transfer: not connected"},
      {Kind::Vanish, 6, "no error, found, 4, 4, wait 1, 0"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << "kind " << static_cast<int>(row.kind) << ", call " << row.call);
    Sleepy camera;
    FaultyDriverHost host(camera);
    host.Arm(DriverFault{.kind = row.kind, .call = row.call, .milliseconds = 25});
    EXPECT_EQ(Calls(host), row.log);
    EXPECT_EQ(camera.slept, row.kind == Kind::Timeout || row.kind == Kind::Hang ? 25u : 0u);
    host.Restore();
    EXPECT_EQ(Calls(host), rows[0].log);
    EXPECT_EQ(host.Calls(), 7u);
  }
}

}  // namespace
}  // namespace zel
