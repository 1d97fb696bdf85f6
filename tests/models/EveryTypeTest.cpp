// What holds for all 99 types.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "models/ModelExpectations.h"
#include "models/OpenedCamera.h"

namespace zel {
namespace {

using test::OpenedCamera;
using P = CZELDeviceProperty;

/// Settings with a record.
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
    {kAuxValue3, &P::SetAuxValue3},
    {kAuxValue4, &P::SetAuxValue4},
};
/// Settings without one, at values that no camera starts with.
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

/// Whether the program before ended well or was killed in the middle of a capture.
TEST_P(EveryType, StartsAsIfNoOtherProgramHadUsedIt) {
  OpenedCamera camera(GetParam());
  ASSERT_TRUE(camera.Plays());
  const auto fresh = camera.Registers();
  camera.Reopen();
  ChangeEverything(camera.Property());
  ASSERT_TRUE(camera.Plays());
  const auto changed = camera.Registers();
  EXPECT_NE(changed, fresh);
  const auto killed = [&](VirtualCamera& sensor) {
    for (const auto& [address, value] : changed) {
      if (address < OpenedCamera::kFpga) sensor.WriteRegister(address, value);
    }
  };
  for (const bool endedWell : {true, false}) {
    camera.Reopen(endedWell ? std::function<void(VirtualCamera&)>() : killed);
    ASSERT_TRUE(camera.Plays());
    EXPECT_THAT(camera.Registers(), testing::ContainerEq(fresh)) << endedWell;
  }
  EXPECT_EQ(camera.ProtocolErrors(), std::vector<std::string>());
}

/// What works is offered, and what is offered works. Half clock answers success on USB 2.0 types without one.
TEST_P(EveryType, OffersWhatItTakes) {
  OpenedCamera camera(GetParam());
  for (const auto& [id, set] : kRecords) {
    if (id == kHalfClock) continue;
    const PropertyRecord record = camera.Property().Record(id);
    EXPECT_EQ((camera.Property().*set)(record.minimum) == S_OK, record.supported != 0) << "record " << id;
    if (record.supported == 0) continue;
    EXPECT_EQ((camera.Property().*set)(record.maximum), S_OK) << "record " << id;
    EXPECT_EQ(camera.Property().Record(id).current, record.maximum) << "record " << id;
  }
}

/// Documented registers of USB 2.0 sensors take the bits that they have; of all others the range is the law.
class EveryUsb20Type : public EveryType {};
TEST_P(EveryUsb20Type, SensorsSeeNoValueThatTheStoreRefuses) {
  OpenedCamera camera(GetParam());
  const auto check = [&](LONG id, auto set) {
    const PropertyRecord record = camera.Property().Record(id);
    for (const LONG value : {record.minimum - 1, record.maximum + 1}) {
      SCOPED_TRACE(testing::Message() << "record " << id << ", value " << value);
      const HRESULT result = set(value);
      const bool sent = !camera.TakeLog().empty();
      EXPECT_EQ(sent, IsDocumented(GetParam(), id));
      if (!sent) {
        EXPECT_EQ(result, E_INVALIDARG);
      }
    }
  };
  for (const auto& [id, set] : kRecords) {
    const bool isRange = id != kHorMirror && id != kVerMirror && id != kExtTrigger && id != kHalfClock &&
                         id != kAuxValue3 && id != kAuxValue4;
    if (!isRange || camera.Property().Record(id).supported == 0) continue;
    check(id, [&](LONG value) { return (camera.Property().*set)(value); });
  }
  for (LONG id = kModelFirst; id < kColorCorrection; ++id) {
    if (camera.Property().Record(id).supported == 0) continue;
    check(id, [&](LONG value) { return camera.Property().SetProgrammableGamma(id, value); });
  }
}

INSTANTIATE_TEST_SUITE_P(Models, EveryType, testing::Range(LONG{0}, kModelCount));
INSTANTIATE_TEST_SUITE_P(Models, EveryUsb20Type, testing::ValuesIn([] {
                           std::vector<LONG> types;
                           for (const ModelRow& row : AllModels()) {
                             if (row.family == Family::Usb20) types.push_back(row.type);
                           }
                           return types;
                         }()));

}  // namespace
}  // namespace zel
