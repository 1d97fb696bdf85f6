#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <set>

#include "api/CZELProperty.h"
#include "api/FakeCamera.h"

namespace zel::test {
namespace {

struct Facade : CameraWithDevice {
  RecordingStore& store = device->store;
  ComPtr<IZELProperty> settings = SettingsOf(*camera.Get());
};

using Outs = std::array<LONG, 4>;
constexpr Outs kNothing{kUntouched, kUntouched, kUntouched, kUntouched};

enum class Form { Forward, Value, Range, Rectangle, Support, Gamma, Ignoring, IgnoringValue };

/// One method: called with 11, 22, 33, 44 it reaches `calls`.
struct Method {
  const char* name;
  Form form;
  std::string calls;
  HRESULT (*call)(IZELProperty&, LONG* const* outs);
  LONG value = 71;  ///< of `RecordingStore`'s
};

unsigned char serialNumber[] = "ZEL12345";

#define ZEL_CALL(name, ...) \
  [](IZELProperty& p, [[maybe_unused]] LONG* const* o) { return p.name(__VA_ARGS__); }
#define ZEL_METHOD(name, form, arguments, ...) \
  {#name, Form::form, #name arguments ";", ZEL_CALL(name, __VA_ARGS__)},
#define ZEL_M_FORWARD_0(name) ZEL_METHOD(name, Forward, "")
#define ZEL_M_FORWARD_1(name) ZEL_METHOD(name, Forward, " 11", 11)
#define ZEL_M_FORWARD_2(name) ZEL_METHOD(name, Forward, " 11 22", 11, 22)
#define ZEL_M_FORWARD_3(name) ZEL_METHOD(name, Forward, " 11 22 33", 11, 22, 33)
#define ZEL_M_FORWARD_4(name) ZEL_METHOD(name, Forward, " 11 22 33 44", 11, 22, 33, 44)
#define ZEL_M_VALUE_0(name) ZEL_METHOD(name, Value, " *", o[0])
#define ZEL_M_VALUE_1(name) ZEL_METHOD(name, Value, " 11 *", 11, o[0])
#define ZEL_M_RANGE_0(name) ZEL_METHOD(name, Range, " * *", o[0], o[1])
#define ZEL_M_RANGE_1(name) ZEL_METHOD(name, Range, " 11 * *", 11, o[0], o[1])
#define ZEL_M_RECTANGLE(name) ZEL_METHOD(name, Rectangle, " * * * *", o[0], o[1], o[2], o[3])
#define ZEL_M_IGNORING_0(name) ZEL_METHOD(name, Ignoring, "")
#define ZEL_M_IGNORING_1(name) ZEL_METHOD(name, Ignoring, " 11", 11)
#define ZEL_M_IGNORING_VALUE(name) ZEL_METHOD(name, IgnoringValue, " *", o[0])
#define ZEL_M_IGNORING_TEXT(name) ZEL_METHOD(name, Ignoring, " ZEL12345", serialNumber)
#define ZEL_M_RECORD(name, field) \
  {#name, Form::Value, "GetPropertyInfo 11;", ZEL_CALL(name, 11, o[0]), field},

// clang-format off
const std::vector<Method> kMethods = {
    ZEL_M_FORWARD_0(ChangePIDtoDS) ZEL_FORWARDING_1(ZEL_M_FORWARD_1) ZEL_FORWARDING_2(ZEL_M_FORWARD_2)
    ZEL_M_FORWARD_3(SetRegisterEx) ZEL_FORWARDING_4(ZEL_M_FORWARD_4)
    ZEL_METHOD(SetRegisterB, Forward, " 255 128", 0xFF, 0x80)
    ZEL_VALUES_0(ZEL_M_VALUE_0) ZEL_VALUES_1(ZEL_M_VALUE_1)
    ZEL_METHOD(GetRegisterB, Value, " 254 *", 0xFE, o[0])
    ZEL_METHOD(GetRegisterEx, Value, " 22 * 11", 11, 22, o[0])
    ZEL_M_RECORD(GetProperty, 71) ZEL_M_RECORD(GetPropertyDefault, 72)
    ZEL_M_RECORD(GetPropertyMin, 73) ZEL_M_RECORD(GetPropertyMax, 74)
    ZEL_RANGES_0(ZEL_M_RANGE_0) ZEL_RANGES_1(ZEL_M_RANGE_1) ZEL_RECTANGLES(ZEL_M_RECTANGLE)
    {"IsPropertySupported", Form::Support, "IsPropertySupported 11;IsPropertySupported 11;",
     ZEL_CALL(IsPropertySupported, 11, o[0])},
    ZEL_METHOD(GetProgrammableGamma, Gamma, " 11 *", 11, o[0])
    ZEL_IGNORING_0(ZEL_M_IGNORING_0) ZEL_IGNORING_1(ZEL_M_IGNORING_1)
    ZEL_IGNORING_VALUES(ZEL_M_IGNORING_VALUE) ZEL_IGNORING_TEXTS(ZEL_M_IGNORING_TEXT)
};
// clang-format on

/// What a method makes of an operation's result and of what that wrote, or didn't.
std::pair<HRESULT, Outs> Answer(const Method& method, HRESULT result, bool writes) {
  const LONG value = writes ? method.value : 0;
  Outs outs = kNothing;
  switch (method.form) {
    case Form::Forward:
      return {result, outs};
    case Form::Value:
      if (FAILED(result)) return {result, outs};
      outs[0] = value;
      return {value, outs};
    case Form::Range:
      outs[0] = writes ? 71 : 0;
      outs[1] = writes ? 72 : 300;
      return {result, outs};
    case Form::Rectangle:
      return {result, writes ? Outs{71, 72, 73, 74} : Outs{}};
    case Form::Support:
      outs[0] = result;
      return {result, outs};
    case Form::Gamma:
      outs[0] = value;
      return {result, outs};
    case Form::Ignoring:
      return {S_OK, outs};
    case Form::IgnoringValue:
      if (writes) outs[0] = value;
      return {S_OK, outs};
  }
  return {};
}

HRESULT Call(const Method& method, IZELProperty& settings, Outs& outs) {
  outs = kNothing;
  LONG* const pointers[] = {&outs[0], &outs[1], &outs[2], &outs[3]};
  return method.call(settings, pointers);
}

TEST(Property, EveryMethodReachesItsOperationAndAnswersInItsForm) {
  std::set<std::string> names;
  for (const Method& method : kMethods) names.insert(method.name);
  EXPECT_EQ(names.size(), 125u);
  Facade f;
  for (const Method& method : kMethods) {
    for (const HRESULT result : {S_OK, S_FALSE, E_NOTIMPL}) {
      for (const bool writes : {true, false}) {
        SCOPED_TRACE(testing::Message() << method.name << ", " << result << (writes ? " written" : ""));
        f.store.result = result;
        f.store.writes = writes;
        f.store.calls.clear();
        const auto [expected, written] = Answer(method, result, writes);
        Outs outs;
        EXPECT_EQ(Call(method, *f.settings.Get(), outs), expected);
        EXPECT_EQ(outs, written);
        EXPECT_EQ(f.store.calls, method.calls);
        LONG* const nowhere[4] = {};
        EXPECT_EQ(method.call(*f.settings.Get(), nowhere), expected);
      }
    }
  }
}

TEST(Property, WithoutACameraAndAfterIt) {
  auto f = std::make_unique<Facade>();
  const ComPtr<IZELProperty> settings = SettingsOf(*f->camera.Get());
  f.reset();
  const auto bare = NewObject<CZELProperty>();
  for (const Method& method : kMethods) {
    for (IZELProperty* orphan : {settings.Get(), static_cast<IZELProperty*>(bare.Get())}) {
      Outs outs;
      EXPECT_EQ(Call(method, *orphan, outs), E_HANDLE) << method.name;
      EXPECT_EQ(outs, kNothing) << method.name;
    }
  }
}

TEST(Property, ACallUnderWayKeepsTheDeviceUntilItReturns) {
  std::string log;
  auto with = std::make_unique<CameraWithDevice>(&log);
  const auto settings = SettingsOf(*with->camera.Get());
  NativeSink sink;
  with->camera->SetObserver(&sink);
  // The camera goes while the facade's call is still inside the store.
  with->device->store.during = [&] {
    with.reset();
    EXPECT_EQ(log, "stopped;");
  };
  EXPECT_EQ(settings->SetShutter(1), S_OK);
  EXPECT_EQ(log, "stopped;deleted;");
  EXPECT_EQ(sink.references, 1);
}

}  // namespace
}  // namespace zel::test
