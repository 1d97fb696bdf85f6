#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/ResultCodes.h"
#include "device/FakeCamera.h"
#include "imaging/COrvaneImageImpl32.h"
#include "property/CZELDevicePropertyImpl.h"

namespace zel {
namespace {

using Note = std::pair<std::string, LONG>;

/// Notes the settings that can't be read back.
class NotingImage : public COrvaneImageImpl32 {
 public:
  NotingImage() : COrvaneImageImpl32(0) {}
  void SetColorful(unsigned char v) override { Add("colorful", v); }
  void SetGamma(LONG v) override { Add("gamma", v); }
  void SetContrast(LONG v) override { Add("contrast", v); }
  void SetBrightness(LONG v) override { Add("brightness", v); }
  void SetSaturation(LONG v) override { Add("saturation", v); }
  void SetHue(LONG v) override { Add("hue", v); }
  void SetColorCorrection(LONG v) override { Add("correction", v); }
  std::vector<Note> notes;
  std::pair<LONG, LONG> DotFilter() const {
    const FrameSettings settings = Settings();
    return {settings.tones.dotFilterEnabled, settings.tones.dotFilterThreshold};
  }

 private:
  void Add(const char* what, LONG v) { notes.emplace_back(what, v); }
};

class PropertyPush : public testing::Test, protected CaptureLink {
 protected:
  PropertyPush() {
    camera.SetBufferSamples(kDeliverOnDemand);
    camera.OpenCamera(0);
    store.ConnectCapture(this);
  }
  std::shared_ptr<COrvaneImageImpl> HoldImage() override { return image; }
  void ClearFrameQueue() override { ++clears; }

  FakeCamera camera;
  FakeStore& store = camera.store;
  std::shared_ptr<NotingImage> image = std::make_shared<NotingImage>();
  int clears = 0;
};

TEST_F(PropertyPush, SettingsReachTheRunningImage) {
  store.SetBayerDecodingMethod(9);
  store.SetBayerMode(2);
  store.SetAutoWhiteBalance(3);
  store.SetOutputFormat(4);
  store.SetSharpness(40);
  store.SetColorGain(kColorGainRed, 101);
  store.SetColorGain(kColorGainGreen, 102);
  store.SetColorGain(kColorGainBlue, 103);
  store.SetColorMatrixElement(1, 2, 0.5f);
  const auto readBack = [&] {
    return std::vector<LONG>{image->GetBayerDecodingMethod(), image->GetBayerMode(),
                             image->GetAutoWhiteBalance(),    image->GetOutputFormat(),
                             image->GetSharpness(),           image->GetColorGainR(),
                             image->GetColorGainG(),          image->GetColorGainB()};
  };
  const std::vector<LONG> set = {1, 2, 3, 4, 40, 101, 102, 103};
  EXPECT_EQ(readBack(), set);
  EXPECT_EQ(image->GetColorMatrixElement(2, 1), 0.5f);
  store.SetColorful(7);
  store.SetGamma(45);
  store.SetContrast(-3);
  store.SetBrightness(-20);
  store.SetSaturation(4);
  store.SetHue(359);
  store.SetColorCorrection(0);
  store.SetDotFilterEnabled(1);
  store.SetDotFilterThreshold(77);
  EXPECT_EQ(image->DotFilter(), (std::pair<LONG, LONG>(1, 77)));
  const std::vector<Note> sent = {{"colorful", 1},   {"gamma", 45}, {"contrast", -3}, {"brightness", -20},
                                  {"saturation", 4}, {"hue", 359},  {"correction", 0}};
  EXPECT_EQ(image->notes, sent);
  // What the store refuses does not reach the image.
  store.SetHue(360);
  store.SetSharpness(257);
  store.SetColorGain(kColorGainRed, -1);
  EXPECT_EQ(image->notes, sent);
  EXPECT_EQ(readBack(), set);
}

TEST_F(PropertyPush, WhitePixelCancellingOnlyWhereSupported) {
  unsigned char enabled = 9, threshold = 9;
  store.SetWhitePixelCanceling(0);
  store.ApplyWhitePixelCanceling(*image);
  image->GetWhitePixelCanceling(&enabled, &threshold);
  EXPECT_EQ(enabled, 0);
  store.Edit(kWhitePixelCanceling) = {0, 400, 0, 0, 1, 0};
  const LONG rows[][3] = {{1, 1, 255}, {60, 1, 60}, {400, 1, 255}, {0, 0, 255}};
  for (const auto& [value, expectedEnabled, expectedThreshold] : rows) {
    EXPECT_EQ(store.SetWhitePixelCanceling(value), S_OK);
    image->GetWhitePixelCanceling(&enabled, &threshold);
    EXPECT_EQ(enabled, expectedEnabled);
    EXPECT_EQ(threshold, expectedThreshold);
  }
}

TEST_F(PropertyPush, GainsAreReadBackFromTheRunningImage) {
  image->SetColorGainR(76);
  image->SetColorGainG(77);
  image->SetColorGainB(78);
  for (const bool playing : {true, false}) {  // and stay known afterwards
    if (!playing) image.reset();
    for (LONG id = kColorGainRed; id <= kColorGainBlue; ++id) {
      LONG value = 0;
      EXPECT_EQ(store.GetColorGain(id, &value), S_OK);
      EXPECT_EQ(value, 76 + id - kColorGainRed);
    }
  }
  EXPECT_EQ(store.ApplyColorMatrix(), S_OK);
  store.DetachDevice();
  EXPECT_EQ(store.ApplyColorMatrix(), E_HANDLE);
}

TEST_F(PropertyPush, SubSamplingOnlyWhileOpenedOrStopped) {
  store.Edit(kSubSampleX).supported = 1;
  store.Edit(kSubSampleY).current = 6;
  EXPECT_EQ(store.SetSubSampleX(12), S_OK);
  EXPECT_EQ(store.SetSubSampleX(13), E_INVALIDARG);
  EXPECT_EQ(store.SetSubSampleY(12), E_NOTIMPL);
  EXPECT_EQ(store.Record(kSubSampleY).current, 0);
  camera.Play();
  EXPECT_EQ(store.SetSubSampleX(3), kResultCapturing);
  camera.Pause();
  EXPECT_EQ(store.SetSubSampleY(13), kResultCapturing);
  camera.Stop();
  EXPECT_EQ(store.Record(kSubSampleX).current, 12);
  EXPECT_EQ(store.SetSubSampleX(3), S_OK);
  FakeCamera closed;
  closed.store.AttachDevice(&closed);
  EXPECT_EQ(closed.store.SetSubSampleX(0), kResultCapturing);
}

TEST_F(PropertyPush, TriggerChangeDropsQueuedFrames) {
  store.Edit(kExtTrigger).supported = 0;
  EXPECT_EQ(store.SetExtTrigger(1), E_NOTIMPL);
  EXPECT_EQ(clears, 0);
  store.Edit(kExtTrigger).supported = 1;
  EXPECT_EQ(store.SetExtTrigger(1), S_OK);
  EXPECT_EQ(clears, 1);
}

}  // namespace
}  // namespace zel
