#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "api/FakeCamera.h"

namespace zel::test {
namespace {

struct Answered {
  HRESULT result;
  LONG written;
};

/// A method that asks the device one question, by its answer.
struct Method {
  const char* name;
  HRESULT (*call)(IZELCamera&, LONG* out);
  const char* asked;
  Answered noDevice, positive, negative, zero;
};

#define ZEL_CALL(name, ...) \
  #name, [](IZELCamera& c, LONG* out) { return c.name(__VA_ARGS__ __VA_OPT__(, ) out); }
constexpr Answered kFailed{E_FAIL, E_FAIL}, kNoHandle{E_HANDLE, E_HANDLE}, kDone{S_OK, 0};
constexpr Answered kSilent{E_HANDLE, kUntouched};
const Method kMethods[] = {
    {ZEL_CALL(IsSataCamera), "IsSataCamera;IsSataCamera;", kNoHandle, {2, 1}, {-2, 1}, kDone},
    {ZEL_CALL(GetMaxCameraNum), "GetMaxCameraNum;GetMaxCameraNum;", kNoHandle, {3, 3}, {-3, -3}, kDone},
    {ZEL_CALL(IsCameraValid, 21), "IsCameraValid 21;", kSilent, kDone, kDone, kFailed},
    {ZEL_CALL(OpenCamera, 22), "OpenCamera 22;", kSilent, kDone, kNoHandle, kNoHandle},
    {ZEL_CALL(GetCameraType), "GetCameraType;GetCameraType;", kNoHandle, {8, 8}, {-8, -8}, kDone},
    {ZEL_CALL(Play), "Play;", kSilent, kDone, kDone, kFailed},
    {ZEL_CALL(Pause), "Pause;", kSilent, kDone, kDone, kFailed},
    {ZEL_CALL(Stop), "Stop;", kSilent, kDone, kDone, kFailed},
    {ZEL_CALL(GetStatus), "GetStatus;", kSilent, {9, 9}, {-9, -9}, kDone},
    {ZEL_CALL(GetBufferSamples), "GetBufferSamples;", kSilent, {14, 14}, {-14, -14}, kDone},
    {ZEL_CALL(GetCameraID), "GetCameraID;GetCameraID;", kDone, {7, 7}, {-7, -7}, kDone},
    {ZEL_CALL(IsCameraConnected), "IsCameraConnected;", {S_OK, kUntouched}, {5, 5}, {-5, -5}, kDone},
};
#undef ZEL_CALL

TEST(Camera, EveryQuestionReachesTheDeviceAndIsAnsweredInItsForm) {
  for (const Method& method : kMethods) {
    SCOPED_TRACE(method.name);
    const auto expect = [&](IZELCamera& camera, const Answered& answered) {
      LONG out = kUntouched;
      EXPECT_EQ(method.call(camera, &out), answered.result);
      EXPECT_EQ(out, answered.written);
      EXPECT_EQ(method.call(camera, nullptr), answered.result);
    };
    expect(*NewObject<CZELCamera>().Get(), method.noDevice);
    CameraWithDevice with;
    expect(*with.camera.Get(), method.positive);
    EXPECT_EQ(with.device->calls, std::string(method.asked) + method.asked);
    with.device->factor = -1;
    expect(*with.camera.Get(), method.negative);
    with.device->factor = 0;
    expect(*with.camera.Get(), method.zero);
  }
}

TEST(Camera, OtherCallsWithoutADevice) {
  const auto camera = NewObject<CZELCamera>();
  IZELProperty* settings = reinterpret_cast<IZELProperty*>(&settings);
  IZELProperty* const before = settings;
  ArrayVariant array(16);
  LONG out = kUntouched;
  NativeSink native;
  ManagedSink managed;
  EXPECT_EQ(camera->GetProperty(&settings), E_HANDLE);
  EXPECT_EQ(settings, before);
  EXPECT_EQ(camera->GetData(array.variant, &out), E_HANDLE);
  EXPECT_EQ(out, kUntouched);
  EXPECT_EQ(camera->SetObserver(&native), E_HANDLE);
  EXPECT_EQ(camera->SetObserverNet(&managed), E_HANDLE);
  EXPECT_EQ(native.references, 1);
  EXPECT_EQ(managed.references, 1);
  EXPECT_EQ(camera->SetBufferSamples(1), S_OK);
}

TEST(Camera, SettingsForNobody) {
  CameraWithDevice with;
  const LONG locks = ModuleLockCount();
  EXPECT_EQ(with.camera->GetProperty(nullptr), S_OK);
  EXPECT_EQ(ModuleLockCount(), locks);
}

TEST(Camera, BufferSamplesReachTheDevice) {
  CameraWithDevice with;
  EXPECT_EQ(with.camera->SetBufferSamples(2), S_OK);
  EXPECT_EQ(with.device->calls, "SetBufferSamples 2;");
}

TEST(Camera, LastReleaseStopsAndDeletesTheDevice) {
  std::string log;
  { const CameraWithDevice with(&log); }
  EXPECT_EQ(log, "stopped;deleted;");
}

TEST(Camera, AnExceptionBecomesAFailureCode) {
  class Throwing : public FakeDevice {
    LONG Play() override { throw std::bad_alloc(); }
  };
  const auto camera = NewObject<CZELCamera>();
  camera->Attach(std::make_unique<Throwing>());
  EXPECT_EQ(camera->Play(nullptr), E_FAIL);
}

TEST(Camera, DeviceOf) {
  CameraWithDevice with;
  EXPECT_EQ(DeviceOf(with.camera.Get()), with.device);
  EXPECT_EQ(DeviceOf(NewObject<CZELCamera>().Get()), nullptr);
  EXPECT_EQ(DeviceOf(nullptr), nullptr);
}

}  // namespace
}  // namespace zel::test
