#include "device/CZELDeviceImpl.h"

#include <gtest/gtest.h>

#include <limits>
#include <new>

#include "FakeCamera.h"
#include "common/ResultCodes.h"
#include "device/DeviceAvailability.h"

namespace zel {
namespace {

void Bring(FakeCamera& camera, LONG state) {
  if (state == kStateClosed) return;
  camera.OpenCamera(1);
  if (state == kStateOpened) return;
  camera.Play();
  if (state == kStatePaused) camera.Pause();
  if (state == kStateStopped) camera.Stop();
}

TEST(DeviceStates, EveryCallInEveryState) {
  enum Call { OpenSame, OpenOther, Play, Pause, Stop };
  struct Row {
    LONG state;
    Call call;
    LONG result;
    std::vector<LONG> notified;  ///< states, the last is the new one
  };
  const LONG C = kStateClosed, O = kStateOpened, P = kStatePlaying, H = kStatePaused, S = kStateStopped;
  const Row rows[] = {
      {C, OpenSame, 1, {O}},     {C, OpenOther, 1, {O}}, {C, Play, 0, {}},       {C, Pause, 0, {}},
      {C, Stop, 0, {}},          {O, OpenSame, 1, {}},   {O, OpenOther, 1, {O}}, {O, Play, 1, {P}},
      {O, Pause, 0, {}},         {O, Stop, 0, {}},       {P, OpenSame, 1, {}},   {P, OpenOther, 1, {S, O}},
      {P, Play, 1, {}},          {P, Pause, 1, {H}},     {P, Stop, 1, {S}},      {H, OpenSame, 1, {}},
      {H, OpenOther, 1, {S, O}}, {H, Play, 1, {P}},      {H, Pause, 0, {}},      {H, Stop, 1, {S}},
      {S, OpenSame, 1, {}},      {S, OpenOther, 1, {O}}, {S, Play, 1, {P}},      {S, Pause, 0, {}},
      {S, Stop, 0, {}},
  };
  for (const LONG mode : {kDeliverCallback, kDeliverQueue, kDeliverOnDemand}) {
    for (const Row& row : rows) {
      SCOPED_TRACE(testing::Message() << "mode " << mode << " row " << &row - rows);
      Listener listener;
      {
        FakeCamera camera;
        camera.SetBufferSamples(mode);
        Bring(camera, row.state);
        ASSERT_EQ(camera.GetStatus(), row.state);
        camera.SetObserver(&listener);
        const int opens = camera.opens;
        const LONG result = row.call == OpenSame    ? camera.OpenCamera(1)
                            : row.call == OpenOther ? camera.OpenCamera(2)
                            : row.call == Play      ? camera.Play()
                            : row.call == Pause     ? camera.Pause()
                                                    : camera.Stop();
        EXPECT_EQ(result, row.result);
        EXPECT_EQ(listener.states, row.notified);
        EXPECT_EQ(camera.GetStatus(), row.notified.empty() ? row.state : row.notified.back());
        EXPECT_EQ(camera.opens - opens, !row.notified.empty() && row.notified.back() == O);
      }
      EXPECT_EQ(listener.states.back(), kStateStopped);  // deletion
    }
  }
}

TEST(DeviceStates, FailedOpenLeavesTheNewIndexAndStateZero) {
  Listener listener;
  FakeCamera camera;
  camera.SetObserver(&listener);
  camera.openResult = 0;
  EXPECT_EQ(camera.OpenCamera(3), 0);
  EXPECT_EQ(camera.GetCameraIndex(), 3);
  EXPECT_EQ(camera.GetCameraID(), 3);
  EXPECT_EQ(listener.states, std::vector<LONG>{kStateOpened});
  EXPECT_EQ(camera.OpenCamera(3), 1);
  EXPECT_EQ(camera.opens, 1);
  camera.Shutdown();
  EXPECT_EQ(camera.Play(), 0);
  EXPECT_EQ(camera.OpenCamera(1), 0);
}

TEST(DeviceImage, ExistsOnlyWhileCapturingAndFollowsTheSettings) {
  FakeCamera camera;
  camera.SetBufferSamples(kDeliverOnDemand);
  camera.OpenCamera(0);
  BITMAPINFOHEADER header{};
  EXPECT_EQ(camera.GetBitmapInfo(&header), 0);
  EXPECT_EQ(camera.GetImage(), nullptr);
  camera.store.SetOutputFormat(5);
  camera.store.SetColorMatrixElement(3, 2, 0.75f);
  ASSERT_EQ(camera.Play(), 1);
  EXPECT_EQ(camera.GetBitmapInfo(nullptr), 1);
  EXPECT_EQ(camera.GetBitmapInfo(&header), 1);
  EXPECT_EQ(header.biWidth, 32);
  EXPECT_EQ(header.biBitCount, 32);
  const auto image = camera.HoldImage();
  EXPECT_EQ(image.get(), camera.GetImage());
  EXPECT_EQ(image->GetColorMatrixElement(2, 3), 0.75f);
  camera.store.SetColorGain(kColorGainRed, 99);  // while playing
  EXPECT_EQ(image->GetColorGainR(), 99);
  EXPECT_EQ(camera.Stop(), 1);
  EXPECT_EQ(camera.GetImage(), nullptr);
  EXPECT_EQ(camera.GetBitmapInfo(nullptr), 0);
  EXPECT_EQ(image->GetWidth(), 32);  // whoever still uses it may do so
}

TEST(DeviceImage, ClassFollowsTheOutputFormat) {
  for (const auto& [format, stride] :
       {std::pair<LONG, LONG>{0, 32}, {1, 128}, {4, 96}, {5, 128}, {77, 128}}) {
    FakeCamera camera;
    camera.SetBufferSamples(kDeliverQueue);
    camera.store.SetOutputFormat(format);
    camera.onRead = [&](unsigned char* buffer) { return camera.PermittedFrame(buffer); };
    camera.permits.Release();
    camera.OpenCamera(0);
    camera.Play();
    EXPECT_EQ(camera.GetImage()->GetStride(), stride);
    std::vector<unsigned char> picture(static_cast<std::size_t>(stride) * 8);
    EXPECT_EQ(camera.GetData(picture.data(), 0x2000), S_OK);
  }
}

TEST(DevicePlay, SurvivesUnusableGeometryAndFailingTransports) {
  constexpr std::int64_t kHuge = std::numeric_limits<std::int64_t>::max();
  struct Row {
    std::int64_t bytes;
    LONG width, height;
  };
  const Row rows[] = {{0, 32, 8},
                      {-5, 32, 8},
                      {kHuge, 32, 8},
                      {kFrameBytes, 0, 0},
                      {kFrameBytes, -32, 8},
                      {kFrameBytes, 32, INT32_MIN},
                      {kFrameBytes, INT32_MAX, INT32_MAX},
                      {kFrameBytes, 32, 9}};
  for (const LONG mode : {kDeliverCallback, kDeliverQueue, kDeliverOnDemand}) {
    for (const Row& row : rows) {
      SCOPED_TRACE(testing::Message() << "mode " << mode << " row " << &row - rows);
      Listener listener;
      FakeCamera camera;
      camera.SetBufferSamples(mode);
      camera.store.SetTimeout(1);
      camera.OpenCamera(0);
      camera.rawBytes = row.bytes;
      camera.geometry_.width = camera.geometry_.sourceWidth = row.width;
      camera.geometry_.height = camera.geometry_.sourceHeight = row.height;
      camera.SetObserver(&listener);
      EXPECT_EQ(camera.Play(), 1);
      unsigned char pixels[kFrameBytes];
      const HRESULT result = camera.GetData(pixels, 0x2000);
      if (mode != kDeliverOnDemand) {
        EXPECT_EQ(result, kResultTimeout);
      }
      if (row.bytes != static_cast<std::int64_t>(kFrameBytes)) {
        EXPECT_NE(result, S_OK);
        EXPECT_EQ(camera.frames, 0u);  // nothing was read into nowhere
      }
      EXPECT_EQ(camera.Stop(), 1);
      EXPECT_EQ(listener.last, 0u);
    }
  }
  class Throwing : public FakeCamera {
   public:
    ~Throwing() override { Shutdown(); }
    LONG PrepareCapture() override { throw std::bad_alloc(); }
  } throwing;
  throwing.OpenCamera(0);
  EXPECT_EQ(throwing.Play(), 0);
  EXPECT_EQ(throwing.GetStatus(), kStateOpened);
  EXPECT_EQ(throwing.GetImage(), nullptr);
}

TEST(DeviceObserver, IsNotCalledOnceItWasReplaced) {
  Listener listener;
  Event entered, release;
  std::atomic<bool> returned = false;
  FakeCamera camera;
  listener.onFrame = [&](std::uint32_t) {
    entered.Set();
    release.Wait();
    returned = true;
  };
  camera.SetObserver(&listener);
  camera.OpenCamera(0);
  camera.Play();
  entered.Wait();
  Event calling;
  bool returnedBefore = false;
  Worker client([&] {
    calling.Set();
    camera.SetObserver(nullptr);
    returnedBefore = returned;
  });
  calling.Wait();
  release.Set();
  client.Wait();
  EXPECT_TRUE(returnedBefore);
}

TEST(DeviceAvailability, OneOwnerPerEntry) {
  EXPECT_TRUE(IsDeviceFree(98, 31));
  EXPECT_TRUE(ClaimDevice(98, 31));
  EXPECT_FALSE(ClaimDevice(98, 31));
  EXPECT_FALSE(IsDeviceFree(98, 31));
  EXPECT_TRUE(IsDeviceFree(97, 31) && IsDeviceFree(98, 30));
  ReleaseDevice(98, 31);
  EXPECT_TRUE(IsDeviceFree(98, 31));
  for (const auto& [type, index] : {std::pair<LONG, LONG>{-1, 0}, {99, 0}, {0, -1}, {0, 32}}) {
    EXPECT_FALSE(IsDeviceFree(type, index));
    EXPECT_FALSE(ClaimDevice(type, index));
    ReleaseDevice(type, index);
  }
}

}  // namespace
}  // namespace zel
