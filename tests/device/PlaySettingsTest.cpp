#include "device/PlaySettings.h"

#include <gtest/gtest.h>

#include "FakeCamera.h"

namespace zel {
namespace {

/// Leaves it to `Play` alone what the image object is given.
class PlainCamera : public FakeCamera {
 public:
  ~PlainCamera() override { Shutdown(); }
  LONG PrepareCapture() override {
    during();
    ApplyFrameGeometry();
    return AllocateRawBuffers(rawBytes);
  }
  std::function<void()> during = [] {};
};

/// Opens what an image object keeps to itself and its classes.
struct Opened : COrvaneImageImpl {
  using COrvaneImageImpl::filter_;
  using COrvaneImageImpl::Settings;
};

FrameSettings SettingsAfterPlay(const std::function<void(PlainCamera&)>& change) {
  PlainCamera camera;
  camera.SetBufferSamples(kDeliverOnDemand);
  camera.OpenCamera(0);
  change(camera);
  EXPECT_EQ(camera.Play(), 1);
  return (*camera.HoldImage().*&Opened::Settings)();
}

TEST(PlaySettings, EachReachesTheImage) {
  struct Row {
    const char* name;
    void (*change)(PlainCamera&);
    LONG (*look)(const FrameSettings&);
    LONG standard, changed;
  };
#define ZEL_SET(...) [](PlainCamera& c) { c.__VA_ARGS__; }
#define ZEL_LOOK(field) [](const FrameSettings& s) { return LONG{s.field}; }
  const Row rows[] = {
      {"output format", ZEL_SET(store.SetOutputFormat(1)), ZEL_LOOK(format.outputFormat), 0, 1},
      {"input format", ZEL_SET(store.settings_.inputFormat = 6), ZEL_LOOK(format.inputFormat), 0, 6},
      {"raw copy", ZEL_SET(SetKeepRawData(3)), ZEL_LOOK(format.keepRaw), 0, 1},
      {"sample size", ZEL_SET(store.SetTransMode(1)), ZEL_LOOK(format.eightBitTransfer), 1, 0},
      {"two taps", ZEL_SET(store.settings_.twoTap = 6), ZEL_LOOK(format.twoTap), 0, 6},
      {"width", ZEL_SET(geometry_.width = 31), ZEL_LOOK(format.width), 32, 31},
      {"height", ZEL_SET(geometry_.height = 7), ZEL_LOOK(format.height), 8, 7},
      {"row pitch", ZEL_SET(geometry_.sourceWidth = 36), ZEL_LOOK(format.sourceWidth), 32, 36},
      {"rows", ZEL_SET(geometry_.sourceHeight = 9), ZEL_LOOK(format.sourceHeight), 8, 9},
      {"Bayer mode", ZEL_SET(store.SetBayerMode(2)), ZEL_LOOK(format.bayerMode), 0, 2},
      {"colour", ZEL_SET(store.SetColorful(0)), ZEL_LOOK(format.colorful), 1, 0},
      {"decoding", ZEL_SET(store.SetBayerDecodingMethod(2)), ZEL_LOOK(format.bayerDecodingMethod), 0, 2},
      {"white pixels", ZEL_SET(store.Edit(kWhitePixelCanceling) = {0, 400, 0, 60, 1, 0}),
       ZEL_LOOK(format.whitePixelCanceling), 0, 1},
      {"white pixels' threshold", ZEL_SET(store.Edit(kWhitePixelCanceling) = {0, 400, 0, 60, 1, 0}),
       ZEL_LOOK(tones.whitePixelThreshold), 255, 60},
      {"white balance", ZEL_SET(store.SetAutoWhiteBalance(3)), ZEL_LOOK(tones.autoWhiteBalance), 0, 3},
      {"red", ZEL_SET(store.SetColorGain(kColorGainRed, 11)), ZEL_LOOK(tones.gains.r), 128, 11},
      {"green", ZEL_SET(store.SetColorGain(kColorGainGreen, 12)), ZEL_LOOK(tones.gains.g), 128, 12},
      {"blue", ZEL_SET(store.SetColorGain(kColorGainBlue, 13)), ZEL_LOOK(tones.gains.b), 128, 13},
      {"contrast", ZEL_SET(store.SetContrast(-3)), ZEL_LOOK(tones.contrast), 0, -3},
      {"brightness", ZEL_SET(store.SetBrightness(20)), ZEL_LOOK(tones.brightness), 0, 20},
      {"saturation", ZEL_SET(store.SetSaturation(4)), ZEL_LOOK(tones.saturation), 0, 4},
      {"hue", ZEL_SET(store.SetHue(100)), ZEL_LOOK(tones.hue), 0, 100},
      {"gamma", ZEL_SET(store.SetGamma(45)), ZEL_LOOK(tones.gamma), 0, 45},
      {"dot filter", ZEL_SET(store.SetDotFilterEnabled(1)), ZEL_LOOK(tones.dotFilterEnabled), 0, 1},
      {"dot threshold", ZEL_SET(store.SetDotFilterThreshold(90)), ZEL_LOOK(tones.dotFilterThreshold), 15, 90},
      {"sharpness", ZEL_SET(store.SetSharpness(44)), ZEL_LOOK(tones.sharpness), 0, 44},
      // Another thread's, too late for the capture that is being prepared.
      {"format meanwhile", ZEL_SET(during = [&c] { c.store.SetOutputFormat(4); }),
       ZEL_LOOK(format.outputFormat), 0, 0},
  };
#undef ZEL_SET
#undef ZEL_LOOK
  for (const Row& row : rows) {
    EXPECT_EQ(row.look(SettingsAfterPlay([](PlainCamera&) {})), row.standard) << row.name;
    EXPECT_EQ(row.look(SettingsAfterPlay(row.change)), row.changed) << row.name;
  }
}

TEST(PlaySettings, TheColourMatrixActsWhenItIsOn) {
  for (const LONG on : {1, 0}) {
    FakeCamera camera;
    camera.SetBufferSamples(kDeliverOnDemand);
    camera.OpenCamera(0);
    camera.store.SetColorMatrixElement(0, 0, 2.f);
    camera.store.SetColorCorrection(on);
    camera.Play();
    const auto image = camera.HoldImage();
    EXPECT_EQ((*image.*&Opened::filter_).Matrix().Product().c[0][0], on != 0 ? 128 : 64);
  }
}

}  // namespace
}  // namespace zel
