#include <gtest/gtest.h>

#include "api/CZELProperty.h"
#include "api/FakeCamera.h"

namespace zel::test {
namespace {

struct Facade : CameraWithDevice {
  FakeStore& store = device->store;
  ComPtr<IZELProperty> settings = SettingsOf(*camera.Get());
};

TEST(Property, ForwardsArgumentsAndResult) {
  Facade f;
  for (const HRESULT result : {S_OK, S_FALSE, E_NOTIMPL}) {
    f.store.result = result;
    EXPECT_EQ(f.settings->SetShutter(-7), result);
  }
  f.store.calls.clear();
  f.settings->SetRegisterB(0xFF, 0x80);
  f.settings->SetRegisterEx(1, 2, 3);
  f.settings->GetRegisterEx(7, 0x1234, nullptr);
  EXPECT_EQ(f.store.calls, "SetRegisterB 255 128;SetRegisterEx 1 2 3;GetRegisterEx 4660 mode 7;");
}

struct ValueRow {
  HRESULT operation;
  LONG value;
  HRESULT result;
  LONG written;
};
// The value itself is the result, also a negative one; a failure writes nothing.
const ValueRow kValues[] = {
    {S_OK, 300, 300, 300},
    {S_OK, 0, 0, 0},
    {S_OK, -10, -10, -10},
    {S_FALSE, 5, 5, 5},
    {E_NOTIMPL, 800, E_NOTIMPL, kUntouched},
};

TEST(Property, ValueGettersAndRecords) {
  using Call = HRESULT (*)(IZELProperty&, LONG*);
  const Call calls[] = {
      [](IZELProperty& p, LONG* out) { return p.GetShutter(out); },
      [](IZELProperty& p, LONG* out) { return p.GetRegisterEx(1, 2, out); },
      [](IZELProperty& p, LONG* out) { return p.GetProperty(13, out); },
      [](IZELProperty& p, LONG* out) { return p.GetPropertyDefault(13, out); },
      [](IZELProperty& p, LONG* out) { return p.GetPropertyMin(13, out); },
      [](IZELProperty& p, LONG* out) { return p.GetPropertyMax(13, out); },
  };
  for (const ValueRow& row : kValues) {
    Facade f;
    f.store.result = row.operation;
    f.store.value = row.value;
    for (std::size_t n = 0; n < std::size(calls); ++n) {
      SCOPED_TRACE(n);
      f.store.record = {
          .minimum = -1, .maximum = -1, .defaultValue = -1, .current = -1, .supported = 1, .spare = -1};
      LONG PropertyRecord::*const fields[] = {&PropertyRecord::current, &PropertyRecord::defaultValue,
                                              &PropertyRecord::minimum, &PropertyRecord::maximum};
      if (n >= 2) f.store.record.*fields[n - 2] = row.value;
      LONG out = kUntouched;
      EXPECT_EQ(calls[n](*f.settings.Get(), &out), row.result);
      EXPECT_EQ(out, row.written);
      EXPECT_EQ(calls[n](*f.settings.Get(), nullptr), row.result);
    }
  }
}

TEST(Property, RangesAndRectanglesAreWrittenWhateverTheResult) {
  Facade f;
  LONG low = kUntouched, high = kUntouched, x = kUntouched, y = 0, w = 0, h = 0;
  EXPECT_EQ(f.settings->GetShutterRange(&low, &high), S_OK);
  EXPECT_EQ(low * 10 + high, 34);
  EXPECT_EQ(f.settings->GetROI(&x, &y, &w, &h), S_OK);
  EXPECT_EQ(x * 1000 + y * 100 + w * 10 + h, 1234);
  f.store.result = E_NOTIMPL;
  EXPECT_EQ(f.settings->GetShutterRange(&low, &high), E_NOTIMPL);
  EXPECT_EQ(low, 0);
  EXPECT_EQ(high, 300);
  EXPECT_EQ(f.settings->GetROI(&x, nullptr, &w, nullptr), E_NOTIMPL);
  EXPECT_EQ(x, 0);
  EXPECT_EQ(f.settings->GetShutterRange(nullptr, nullptr), E_NOTIMPL);
}

TEST(Property, SupportTestAsksTwiceAndWritesTheFirstAnswer) {
  Facade f;
  f.store.result = E_NOTIMPL;
  LONG out = kUntouched;
  EXPECT_EQ(f.settings->IsPropertySupported(11, &out), E_NOTIMPL);
  EXPECT_EQ(out, E_NOTIMPL);
  EXPECT_EQ(f.store.calls, "IsPropertySupported 11;IsPropertySupported 11;");
  f.store.calls.clear();
  EXPECT_EQ(f.settings->IsPropertySupported(11, nullptr), E_NOTIMPL);
  EXPECT_EQ(f.store.calls, "IsPropertySupported 11;");
}

TEST(Property, GammaPointsAndIgnoredResults) {
  Facade f;
  f.store.result = E_NOTIMPL;
  f.store.value = 9;
  LONG out = kUntouched;
  EXPECT_EQ(f.settings->GetProgrammableGamma(42, &out), E_NOTIMPL);
  EXPECT_EQ(out, 9);
  EXPECT_EQ(f.settings->GetProgrammableGamma(42, nullptr), E_NOTIMPL);
  EXPECT_EQ(f.settings->SetSharpness(1000), S_OK);
  EXPECT_EQ(f.store.calls, "SetSharpness 1000;");
  out = kUntouched;
  EXPECT_EQ(f.settings->GetSharpness(&out), S_OK);
  EXPECT_EQ(out, 9);
  EXPECT_EQ(f.settings->GetSharpness(nullptr), S_OK);
}

void ExpectNoCamera(IZELProperty& settings) {
  LONG out = kUntouched, other = kUntouched;
  EXPECT_EQ(settings.SetShutter(1), E_HANDLE);
  EXPECT_EQ(settings.GetShutter(&out), E_HANDLE);
  EXPECT_EQ(settings.GetShutterRange(&out, &other), E_HANDLE);
  EXPECT_EQ(settings.GetProperty(1, &out), E_HANDLE);
  EXPECT_EQ(settings.GetROI(&out, &other, &out, &other), E_HANDLE);
  EXPECT_EQ(settings.IsPropertySupported(1, &out), E_HANDLE);
  EXPECT_EQ(settings.GetProgrammableGamma(1, &out), E_HANDLE);
  EXPECT_EQ(settings.SetSharpness(1), E_HANDLE);
  EXPECT_EQ(out, kUntouched);
  EXPECT_EQ(other, kUntouched);
}

TEST(Property, WithoutACameraAndAfterIt) {
  ExpectNoCamera(*NewObject<CZELProperty>().Get());
  ComPtr<IZELProperty> settings;
  {
    Facade f;
    settings = SettingsOf(*f.camera.Get());
    EXPECT_EQ(settings->SetShutter(1), S_OK);
  }
  ExpectNoCamera(*settings.Get());
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
