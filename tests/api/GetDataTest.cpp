// Frames from the engine into the memory of an application: nothing beyond it, whatever is set or stopped
// meanwhile.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <span>

#include "api/FakeCamera.h"
#include "common/ResultCodes.h"
#include "device/FakeCamera.h"
#include "imaging/GuardedBytes.h"

namespace zel::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kPixels = kFrameBytes;
std::size_t BytesOf(LONG format) {
  return kPixels * (format == 0 ? 1 : format == 4 ? 3 : 4);
}

/// The value that all samples of a flat picture have; -1 if they differ.
int ValueOf(std::span<const std::uint8_t> picture, LONG format) {
  for (std::size_t n = 0; n < picture.size(); ++n) {
    const bool alpha = BytesOf(format) == 4 * kPixels && n % 4 == 3;
    if (picture[n] != (alpha ? 255 : picture[0])) return -1;
  }
  return picture[0];
}

/// An array whose elements border on a page that nobody may touch.
class GuardedArray {
 public:
  explicit GuardedArray(std::size_t bytes) : bytes_(Bytes(bytes, 0xEE)) {
    VariantInit(&variant);
    variant.vt = VT_ARRAY | VT_UI1;
    variant.parray = &array_;
    array_.cDims = 1;
    array_.cbElements = 1;
    array_.pvData = bytes_.data();
    array_.rgsabound[0] = {static_cast<ULONG>(bytes), 0};
  }
  GuardedArray(const GuardedArray&) = delete;
  GuardedArray& operator=(const GuardedArray&) = delete;

  Bytes Copy() const { return bytes_.Copy(); }
  bool IsUntouched() const { return Copy() == Bytes(Copy().size(), 0xEE); }

  VARIANT variant;

 private:
  GuardedBytes bytes_;
  SAFEARRAY array_{};
};

/// A camera of flat pictures 1, 2, 3, ..., one for each permit.
class FlatCamera : public zel::FakeCamera {
 public:
  FlatCamera() {
    store.SetColorCorrection(0);
    onRead = [this](unsigned char* buffer) {
      const LONG result = PermittedFrame(buffer);
      if (result != 0) std::memset(buffer, static_cast<int>(frames), kFrameBytes);
      return result;
    };
  }
  ~FlatCamera() override { Shutdown(); }

  COrvaneImage* GetImage() override {
    ++imagesLent;
    return FakeCamera::GetImage();
  }

  std::atomic<int> imagesLent = 0;  ///< without keeping the capture that owns them
};

class GetData : public testing::Test {
 protected:
  void Play(LONG mode, LONG format = 0) {
    camera.SetBufferSamples(mode);
    settings->SetOutputFormat(format);
    camera.OpenCamera(0, nullptr);
    ASSERT_EQ(camera.Play(nullptr), S_OK);
  }
  HRESULT Take(const VARIANT& variant) {
    written = kUntouched;
    return camera.GetData(variant, &written);
  }

  NativeSink sink;
  CameraWith<FlatCamera> with;
  CZELCamera& camera = *with.camera.Get();
  FlatCamera& device = *with.device;
  ComPtr<IZELProperty> settings = SettingsOf(camera);
  LONG written = kUntouched;
};

TEST_F(GetData, CopiesIntoArraysAndToAddresses) {
  Play(kDeliverQueue);
  ArrayVariant array(kFrameBytes);
  GuardedArray guarded(kFrameBytes);
  VARIANT variable = array.variant;
  Bytes raw(kFrameBytes);
  const struct {
    VARIANT argument;
    const unsigned char* destination;
  } rows[] = {
      {array.variant, array.Data()},
      {array.Reference(), array.Data()},
      {Plain(VT_BYREF | VT_VARIANT, &variable), array.Data()},  // a script's variable
      {Plain(VT_BYREF | VT_UI1, raw.data()), raw.data()},
      {guarded.variant, static_cast<unsigned char*>(guarded.variant.parray->pvData)},
  };
  for (const auto& row : rows) {
    device.permits.Release();
    EXPECT_EQ(Take(row.argument), S_OK);
    EXPECT_EQ(written, S_OK);
    EXPECT_EQ(ValueOf({row.destination, kFrameBytes}, 0), 1 + (&row - rows));
  }
  settings->SetTimeout(1);
  EXPECT_EQ(Take(array.variant), kResultTimeout);
  EXPECT_EQ(written, LONG{kResultTimeout});
}

TEST_F(GetData, RefusesWhatAFrameDoesNotFitAndKeepsTheFrame) {
  Play(kDeliverQueue);
  device.permits.Release();
  constexpr USHORT kVariantElements = 0x0800;
  ArrayVariant owning(kFrameBytes);
  owning.variant.parray->fFeatures |= kVariantElements;
  GuardedArray empty(0), small(kFrameBytes - 1), enough(kFrameBytes + 9);
  const struct {
    VARIANT argument;
    LONG written;
  } rows[] = {
      {Plain(VT_I4, nullptr), kUntouched},
      {Plain(VT_EMPTY, nullptr), kUntouched},
      {Plain(VT_ARRAY | VT_UI1, nullptr), E_FAIL},
      {Plain(VT_BYREF | VT_UI1, nullptr), E_FAIL},
      {Plain(VT_BYREF | VT_ARRAY | VT_UI1, nullptr), E_FAIL},
      {small.variant, E_FAIL},
      {empty.variant, E_FAIL},
      {owning.variant, E_FAIL},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    EXPECT_EQ(Take(row.argument), E_FAIL);
    EXPECT_EQ(written, row.written);
  }
  EXPECT_TRUE(small.IsUntouched());
  EXPECT_EQ(Take(enough.variant), S_OK);
  const Bytes copied = enough.Copy();
  EXPECT_EQ(ValueOf({copied.data(), kFrameBytes}, 0), 1);
  EXPECT_EQ(copied[kFrameBytes], 0xEE);
  owning.variant.parray->fFeatures &= static_cast<USHORT>(~kVariantElements);
}

TEST_F(GetData, MakesTheArrayForAVariableThatHoldsNothing) {
  VARIANT variable = Plain(VT_NULL, nullptr);
  const VARIANT reference = Plain(VT_BYREF | VT_VARIANT, &variable);
  EXPECT_EQ(Take(reference), kResultTimeout) << "not playing";
  Play(kDeliverQueue, 5);
  device.permits.Release();
  EXPECT_EQ(Take(reference), S_OK);
  ASSERT_EQ(variable.vt, VT_ARRAY | VT_UI1);
  ASSERT_EQ(variable.parray->rgsabound[0].cElements, BytesOf(5));
  EXPECT_EQ(ValueOf({static_cast<std::uint8_t*>(variable.parray->pvData), BytesOf(5)}, 5), 1);
  VariantClear(&variable);
  settings->SetTimeout(1);
  EXPECT_EQ(Take(reference), kResultTimeout);
  EXPECT_EQ(variable.vt, VT_EMPTY);
}

TEST_F(GetData, LeavesItsDestinationAloneOnDemand) {
  Play(kDeliverOnDemand);
  camera.SetBufferSamples(kDeliverQueue);  // for the next capture
  VARIANT variable = Plain(VT_EMPTY, nullptr);
  GuardedArray small(1), exact(kFrameBytes);
  for (const VARIANT& argument : {small.variant, exact.variant, Plain(VT_BYREF | VT_VARIANT, &variable)}) {
    device.permits.Release();
    EXPECT_EQ(Take(argument), S_OK);
  }
  EXPECT_TRUE(small.IsUntouched() && exact.IsUntouched());
  EXPECT_EQ(variable.vt, VT_EMPTY);
  EXPECT_EQ(device.frames, 3u);
}

/// The pictures of a mode as an application gets them, in memory of the size that it knows.
TEST_F(GetData, FormatsSetWhilePlayingWaitForTheNextPlay) {
  Bytes seen;
  Event told;
  LONG format = 0;
  sink.onEvent = [&](LONG event, void* bits) {
    if (event != kEventFrameProcessed) return S_OK;
    const auto* const pixels = static_cast<const std::uint8_t*>(bits);
    seen.assign(pixels, pixels + BytesOf(format));
    told.Set();
    return S_OK;
  };
  camera.SetObserver(&sink);
  const auto next = [&](LONG mode) {
    GuardedArray array(BytesOf(format));
    told.Reset();
    device.permits.Release();
    if (mode == kDeliverCallback) {
      told.Wait();
      return seen;
    }
    EXPECT_EQ(Take(array.variant), S_OK);
    if (mode == kDeliverQueue) return array.Copy();
    const auto image = device.HoldImage();
    return Bytes(image->GetBuffer(), image->GetBuffer() + image->GetStride() * image->GetHeight());
  };
  for (const LONG mode : {kDeliverCallback, kDeliverQueue, kDeliverOnDemand}) {
    for (const auto& [before, after] :
         {std::pair<LONG, LONG>{0, 1}, {0, 4}, {0, 5}, {4, 1}, {1, 5}, {5, 0}}) {
      SCOPED_TRACE(testing::Message() << "mode " << mode << ", " << before << " to " << after);
      device.frames = 0;
      format = before;
      Play(mode, before);
      for (int n = 1; n <= 6; ++n) {
        if (n == 3) settings->SetOutputFormat(after);
        const Bytes picture = next(mode);
        ASSERT_EQ(picture.size(), BytesOf(before));
        ASSERT_EQ(ValueOf(picture, before), n);
        BITMAPINFOHEADER header{};
        ASSERT_EQ(device.GetBitmapInfo(&header), 1);
        ASSERT_EQ(header.biSizeImage, before == 0 ? kPixels : BytesOf(before));
      }
      camera.Stop(nullptr);
      format = after;
      Play(mode, after);
      const Bytes picture = next(mode);
      ASSERT_EQ(picture.size(), BytesOf(after));
      ASSERT_EQ(ValueOf(picture, after), 7);
      camera.Stop(nullptr);
    }
  }
  camera.SetObserver(nullptr);
}

/// One thread is on its way into `GetData` when another, in frame events the sink's own, ends the capture.
TEST_F(GetData, ACaptureMayEndDuringIt) {
  Event entering, stopped;
  const auto stop = [&] {
    entering.Wait();
    EXPECT_EQ(camera.Stop(nullptr), S_OK);
    stopped.Set();
  };
  sink.onEvent = [&](LONG event, void*) {
    if (event == kEventFrameProcessed) stop();
    return S_OK;
  };
  camera.SetObserver(&sink);
  for (int round = 0; round < 90; ++round) {
    const LONG mode = round % 3;
    SCOPED_TRACE(testing::Message() << "round " << round);
    entering.Reset();
    stopped.Reset();
    Play(mode, round % 2 ? 5 : 0);
    GuardedArray array(BytesOf(round % 2 ? 5 : 0));
    device.permits.Release();
    std::unique_ptr<Worker> stopper;
    if (mode != kDeliverCallback) stopper = std::make_unique<Worker>(stop);
    entering.Set();
    const HRESULT result = Take(array.variant);
    stopped.Wait();
    if (result != S_OK) {
      EXPECT_TRUE(result == kResultTimeout || result == E_FAIL);
      EXPECT_TRUE(array.IsUntouched());
    } else if (mode == kDeliverQueue) {
      EXPECT_GE(ValueOf(array.Copy(), round % 2 ? 5 : 0), 0);
    }
    while (device.permits.Acquire(0)) {
    }
  }
  camera.SetObserver(nullptr);
  EXPECT_EQ(device.imagesLent, 0) << "an image object was used that only its capture keeps";
}

}  // namespace
}  // namespace zel::test
