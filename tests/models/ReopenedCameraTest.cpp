// A program finds its camera as if no other had used it before.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "models/ModelExpectations.h"
#include "models/OpenedCamera.h"

namespace zel {
namespace {

using test::OpenedCamera;
using P = CZELDeviceProperty;

/// Settings with a record, and those without one at a value that no camera starts with.
const struct {
  LONG id;
  test::Setter set;
} kRecords[] = {
    {kHorMirror, &P::SetHorMirror},
    {kVerMirror, &P::SetVerMirror},
    {kExtTrigger, &P::SetExtTrigger},
    {kHalfClock, &P::SetHalfClock},
    {kStrobe, &P::SetStrobe},
    {kAnalogGlobalGain, &P::SetAnalogGlobalGain},
    {kDigitalGlobalGain, &P::SetDigitalGlobalGain},
    {kShutter, &P::SetShutter},
    {kAutoThresh, &P::SetAutoThresh},
    {kWhitePixelCanceling, &P::SetWhitePixelCanceling},
    {kBlackPixelCanceling, &P::SetBlackPixelCanceling},
    {kDenoise, &P::SetDenoise},
    {kNightMode, &P::SetNightMode},
    {kEdgeEnhance, &P::SetEdgeEnhance},
    {kLensCorrection, &P::SetLensCorrection},
    {kSaturation, &P::SetSaturation},
    {kBrightness, &P::SetBrightness},
    {kContrast, &P::SetContrast},
    {kHue, &P::SetHue},
    {kGamma, &P::SetGamma},
    {kAuxValue1, &P::SetAuxValue1},
    {kAuxValue2, &P::SetAuxValue2},
    {kSubSampleX, &P::SetSubSampleX},
};
const std::pair<test::Setter, LONG> kPlain[] = {{&P::SetTransMode, 1},   {&P::SetTransBits, 1},
                                                {&P::SetColorful, 0},    {&P::SetAutoWhiteBalance, 1},
                                                {&P::SetIO, 0xC},        {&P::SetAuxValue3, 1},
                                                {&P::SetAuxValue4, 1},   {&P::SetBayerDecodingMethod, 1},
                                                {&P::SetModelValue1, 1}, {&P::SetModelValue2, 1},
                                                {&P::SetModelValue3, 1}, {&P::SetModelValue4, 1},
                                                {&P::SetModelValue5, 1}, {&P::SetLargeFrameOption, 1}};

void ChangeEverything(CZELDevicePropertyImpl& property) {
  for (const auto& [id, set] : kRecords) {
    const PropertyRecord& record = property.Record(id);
    (property.*set)(record.current == record.maximum ? record.minimum : record.maximum);
  }
  for (const auto& [set, value] : kPlain) (property.*set)(value);
  for (LONG id = kColorGainRed; id <= kColorGainBlue; ++id) property.SetColorGain(id, 200);
  for (LONG id = kModelFirst; id < kColorCorrection; ++id) property.SetProgrammableGamma(id, 7);
  property.SetProperty(kFocusPosition, 200);
  property.SetROI(24, 16, 64, 48);
}

class EveryType : public testing::TestWithParam<LONG> {};

TEST_P(EveryType, StartsAsIfFreshAfterAnyOtherProgram) {
  OpenedCamera fresh(GetParam());
  ASSERT_TRUE(fresh.Plays());
  const auto expected = fresh.Registers();
  fresh.Reopen();
  ChangeEverything(fresh.Property());
  ASSERT_TRUE(fresh.Plays());
  const auto changed = fresh.Registers();
  EXPECT_NE(changed, expected);
  fresh.Reopen();
  ASSERT_TRUE(fresh.Plays());
  EXPECT_THAT(fresh.Registers(), testing::ContainerEq(expected)) << "after a program that ended well";
  EXPECT_EQ(fresh.ProtocolErrors(), std::vector<std::string>());

  fresh.Reopen([&](VirtualCamera& camera) {
    for (const auto& [address, value] : changed) {
      if (address < OpenedCamera::kFpga) camera.WriteRegister(address, value);
    }
  });
  ASSERT_TRUE(fresh.Plays());
  EXPECT_THAT(fresh.Registers(), testing::ContainerEq(expected)) << "after one that was killed";
}

INSTANTIATE_TEST_SUITE_P(Models, EveryType, testing::Range(LONG{0}, kModelCount));

}  // namespace
}  // namespace zel
