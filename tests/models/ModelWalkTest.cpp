#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "models/ModelExpectations.h"
#include "models/OpenedCamera.h"
#include "sim/SensorMap.h"

namespace zel {
namespace {

using test::Expectation;
using test::OpenedCamera;

class EveryFamily : public testing::TestWithParam<Family> {};

TEST_P(EveryFamily, SettersProgramTheSensorAndStoreWhatItTook) {
  for (const auto& rows : {test::CmosExpectations(), test::CcdExpectations(), test::SataExpectations()}) {
    for (const Expectation& row : rows) {
      if (ModelOf(row.type).family != GetParam()) continue;
      SCOPED_TRACE(testing::Message()
                   << "type " << row.type << ", record " << row.id << ", value " << row.value);
      OpenedCamera camera(row.type);
      EXPECT_EQ((camera.Property().*row.set)(row.value), row.result);
      if (GetParam() == Family::Sata) {
        EXPECT_TRUE(camera.Prepares());
        EXPECT_THAT(camera.TakeLog(), testing::HasSubstr(std::string(row.registers)));
      } else {
        EXPECT_EQ(camera.TakeLog(), row.registers);
      }
      EXPECT_EQ(camera.Property().Record(row.id).current, row.stored);
      EXPECT_EQ(camera.ProtocolErrors(), std::vector<std::string>());
    }
  }
}

/// Without SATA, whose settings wait for the next frame.
class EveryPromptFamily : public EveryFamily {};

/// What did not reach the sensor is not stored.
TEST_P(EveryPromptFamily, SettersFailAndStoreNothingWithoutTheirCamera) {
  for (const auto& rows : {test::CmosExpectations(), test::CcdExpectations()}) {
    for (const Expectation& row : rows) {
      if (ModelOf(row.type).family != GetParam() || row.registers.empty()) continue;
      SCOPED_TRACE(testing::Message()
                   << "type " << row.type << ", record " << row.id << ", value " << row.value);
      OpenedCamera camera(row.type);
      const LONG before = camera.Property().Record(row.id).current;
      camera.Unplug();
      EXPECT_TRUE(FAILED((camera.Property().*row.set)(row.value)));
      EXPECT_EQ(camera.Property().Record(row.id).current, before);
      camera.Device().CloseDevice(0);
      EXPECT_TRUE(FAILED((camera.Property().*row.set)(row.value)));
      EXPECT_EQ(camera.Property().Record(row.id).current, before);
    }
  }
}

/// Each type answers to its number, keeps the ROI law and can prepare its whole frame and its smallest one.
TEST_P(EveryFamily, EveryTypePreparesItsWindows) {
  for (const ModelRow& row : AllModels()) {
    if (row.family != GetParam()) continue;
    SCOPED_TRACE(row.type);
    OpenedCamera camera(row.type);
    EXPECT_EQ(camera.Device().GetCameraType(), row.type);
    const auto record = [&](LONG id) { return camera.Property().Record(id); };
    EXPECT_EQ(record(kRoiLeft).maximum + record(kRoiWidth).minimum, record(kRoiWidth).maximum);
    EXPECT_EQ(record(kRoiTop).maximum + record(kRoiHeight).minimum, record(kRoiHeight).maximum);
    EXPECT_TRUE(camera.Prepares()) << "whole frame";
    if (record(kRoiWidth).supported != 0) {
      camera.Property().SetROI(record(kRoiLeft).maximum, record(kRoiTop).maximum, record(kRoiWidth).minimum,
                               record(kRoiHeight).minimum);
      EXPECT_TRUE(camera.Prepares()) << "smallest window";
    }
    EXPECT_EQ(camera.ProtocolErrors(), std::vector<std::string>());
  }
}

std::string NameOf(const testing::TestParamInfo<Family>& info) {
  std::string name = FamilyName(info.param);
  std::erase_if(name, [](char letter) { return letter == ' ' || letter == '.'; });
  return name;
}

INSTANTIATE_TEST_SUITE_P(Models, EveryFamily,
                         testing::Values(Family::Sata, Family::Usb20, Family::Usb30, Family::Wom,
                                         Family::Usb3T2),
                         NameOf);

INSTANTIATE_TEST_SUITE_P(Models, EveryPromptFamily,
                         testing::Values(Family::Usb20, Family::Usb30, Family::Wom, Family::Usb3T2), NameOf);

}  // namespace
}  // namespace zel
