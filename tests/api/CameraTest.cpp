#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "api/FakeCamera.h"

namespace zel::test {
namespace {

struct GetterRow {
  const char* name;
  HRESULT (*call)(IZELCamera&, LONG*);
  // Without a device: result, and what was written (kUntouched: nothing).
  HRESULT noDevice;
  LONG noDeviceWritten;
  // The device answers -3, then 0.
  HRESULT negative;
  LONG negativeWritten;
  HRESULT zero;
  LONG zeroWritten;
};

#define ZEL_CALL(name, ...) \
  #name, [](IZELCamera& c, LONG* out) { return c.name(__VA_ARGS__ __VA_OPT__(, ) out); }
const GetterRow kGetters[] = {
    {ZEL_CALL(IsSataCamera), E_HANDLE, E_HANDLE, -3, 1, 0, 0},
    {ZEL_CALL(GetMaxCameraNum), E_HANDLE, E_HANDLE, -3, -3, 0, 0},
    {ZEL_CALL(IsCameraValid, 0), E_HANDLE, kUntouched, S_OK, 0, E_FAIL, E_FAIL},
    {ZEL_CALL(OpenCamera, 0), E_HANDLE, kUntouched, E_HANDLE, E_HANDLE, E_HANDLE, E_HANDLE},
    {ZEL_CALL(GetCameraType), E_HANDLE, E_HANDLE, -3, -3, 0, 0},
    {ZEL_CALL(Play), E_HANDLE, kUntouched, S_OK, 0, E_FAIL, E_FAIL},
    {ZEL_CALL(Pause), E_HANDLE, kUntouched, S_OK, 0, E_FAIL, E_FAIL},
    {ZEL_CALL(Stop), E_HANDLE, kUntouched, S_OK, 0, E_FAIL, E_FAIL},
    {ZEL_CALL(GetStatus), E_HANDLE, kUntouched, 4, 4, 4, 4},
    {ZEL_CALL(GetBufferSamples), E_HANDLE, kUntouched, 0, 0, 0, 0},
    {ZEL_CALL(GetCameraID), S_OK, 0, -3, -3, 0, 0},
    {ZEL_CALL(IsCameraConnected), S_OK, kUntouched, -3, -3, 0, 0},
};
#undef ZEL_CALL

TEST(Camera, ResultsAndOutParameters) {
  for (const GetterRow& row : kGetters) {
    SCOPED_TRACE(row.name);
    const auto expect = [&](IZELCamera& camera, HRESULT result, LONG written) {
      LONG out = kUntouched;
      EXPECT_EQ(row.call(camera, &out), result);
      EXPECT_EQ(out, written);
      EXPECT_EQ(row.call(camera, nullptr), result);
    };
    const auto bare = NewObject<CZELCamera>();
    expect(*bare.Get(), row.noDevice, row.noDeviceWritten);
    CameraWithDevice with;
    with.device->answer = -3;
    expect(*with.camera.Get(), row.negative, row.negativeWritten);
    with.device->answer = 0;
    expect(*with.camera.Get(), row.zero, row.zeroWritten);
  }
}

TEST(Camera, OpenIsOnlyDoneWhenTheDeviceSaysOne) {
  CameraWithDevice with;
  LONG out = kUntouched;
  EXPECT_EQ(with.camera->OpenCamera(3, &out), S_OK);
  EXPECT_EQ(out, 0);
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
  EXPECT_EQ(with.device->bufferSamples, 2);
  EXPECT_EQ(with.camera->GetBufferSamples(nullptr), 2);
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
