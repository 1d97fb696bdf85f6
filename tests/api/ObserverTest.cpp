#include <gtest/gtest.h>

#include <thread>

#include "api/FakeCamera.h"

namespace zel::test {
namespace {

TEST(Observer, ManagedSinkFirstThenNativeWithTheSamePointer) {
  std::string order;
  void* seen[2] = {};
  ManagedSink managed;
  managed.onEvent = [&](LONG event, void* bits) {
    order += "managed" + std::to_string(event) + ";";
    seen[0] = bits;
    return E_FAIL;  // does not keep the other from its event
  };
  NativeSink native;
  native.onEvent = [&](LONG event, void* bits) {
    order += "native" + std::to_string(event) + ";";
    seen[1] = bits;
    return E_FAIL;
  };
  CameraWithDevice with;
  with.camera->SetObserver(&native);
  with.camera->SetObserverNet(&managed);
  LONG picture = 0;
  with.device->Tell(kEventFrameProcessed, &picture);
  EXPECT_EQ(order, "managed1;native1;");
  EXPECT_EQ(seen[0], &picture);
  EXPECT_EQ(seen[1], &picture);
  with.camera->SetObserver(nullptr);
  with.camera->SetObserverNet(nullptr);
}

TEST(Observer, ClearingOneSinkSilencesBothUntilOneIsSet) {
  NativeSink native;
  ManagedSink managed;
  CameraWithDevice with;
  with.camera->SetObserverNet(&managed);
  EXPECT_EQ(with.camera->SetObserver(nullptr), S_OK);  // none is set: nothing changes
  with.device->Tell(0, nullptr);
  EXPECT_EQ(managed.events, 1);
  with.camera->SetObserver(&native);
  EXPECT_EQ(with.camera->SetObserver(nullptr), S_OK);
  EXPECT_EQ(native.references, 1);
  with.device->Tell(0, nullptr);
  EXPECT_EQ(managed.events, 1);
  EXPECT_EQ(native.events, 0);
  with.camera->SetObserver(&native);
  with.device->Tell(0, nullptr);
  EXPECT_EQ(managed.events, 2);
  EXPECT_EQ(native.events, 1);
  with.camera->SetObserverNet(nullptr);
}

TEST(Observer, References) {
  NativeSink first, second;
  ManagedSink managed;
  {
    CameraWithDevice with;
    with.camera->SetObserver(&first);
    with.camera->SetObserver(&first);
    EXPECT_EQ(first.references, 2);
    with.camera->SetObserver(&second);
    EXPECT_EQ(first.references, 1);
    EXPECT_EQ(second.references, 2);
    with.camera->SetObserverNet(&managed);
  }
  EXPECT_EQ(second.references, 1);
  EXPECT_EQ(managed.references, 2);  // its owner clears it before the camera goes, or it stays
  EXPECT_EQ(second.events, 1);       // the device's end
}

TEST(Observer, SinkMayCallBackIntoTheLibrary) {
  NativeSink sink;
  CameraWithDevice with;
  LONG shutter = 0;
  sink.onEvent = [&](LONG, void*) {
    const auto settings = SettingsOf(*with.camera.Get());
    settings->GetShutter(&shutter);
    return with.camera->SetObserver(nullptr);
  };
  with.camera->SetObserver(&sink);
  with.device->Tell(0, nullptr);
  EXPECT_EQ(shutter, 71);
  EXPECT_EQ(sink.references, 1);
  with.device->Tell(0, nullptr);
  EXPECT_EQ(sink.events, 1);
}

TEST(Observer, SinkMayReleaseTheCameraInItsEvent) {
  std::string log;
  auto* const with = new CameraWithDevice(&log);
  FakeDevice* const device = with->device;
  NativeSink sink;
  sink.onEvent = [&](LONG event, void*) {
    if (event == kEventFrameProcessed) delete with;
    return S_OK;
  };
  with->camera->SetObserver(&sink);
  const LONG locks = ModuleLockCount();
  device->Tell(kEventFrameProcessed, nullptr);
  while (ModuleLockCount() >= locks) std::this_thread::yield();  // the device ends on a thread of its own
  EXPECT_EQ(log, "stopped;deleted;");
  EXPECT_EQ(sink.references, 1);
  EXPECT_EQ(sink.events, 2);
}

TEST(Observer, ReplacingSinksWhileEventsArrive) {
  NativeSink sinks[2];
  std::atomic<bool> usedAfterRelease{false};
  for (NativeSink& sink : sinks) {
    sink.onEvent = [&](LONG, void*) {
      if (sink.references < 2) usedAfterRelease = true;
      return S_OK;
    };
  }
  CZELCameraObserver observer;
  std::atomic<bool> done{false};
  std::thread worker([&] {
    while (!done) observer.Notify(kEventFrameProcessed, nullptr, nullptr);
  });
  auto& slot = observer.Slot(static_cast<IZELGrabberCB*>(nullptr));
  while (sinks[0].events < 200 || sinks[1].events < 200) {
    slot.Set(&sinks[0]);
    slot.Set(&sinks[1]);
    slot.Clear();
  }
  done = true;
  worker.join();
  EXPECT_FALSE(usedAfterRelease);
  EXPECT_EQ(sinks[0].references, 1);
  EXPECT_EQ(sinks[1].references, 1);
}

}  // namespace
}  // namespace zel::test
