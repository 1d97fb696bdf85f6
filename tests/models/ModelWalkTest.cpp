#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "device/CZELDeviceImpl.h"
#include "imaging/COrvaneImage.h"
#include "models/Factory.h"
#include "models/ModelExpectations.h"
#include "platform/PassingDriverHost.h"
#include "property/CZELDevicePropertyImpl.h"
#include "sim/SensorMap.h"
#include "sim/SimDriverHost.h"

namespace zel {
namespace {

using test::Expectation;

/// Writes down which registers are accessed.
class RegisterLog : public PassingDriverHost {
 public:
  using PassingDriverHost::PassingDriverHost;
  void NoteRegister(RegisterAccess access, std::uint32_t address, std::uint32_t value) override {
    char text[40];
    std::snprintf(text, sizeof(text), "%s%s %X=%X", log_.empty() ? "" : "; ",
                  access == RegisterAccess::Read ? "read" : "write", address, value);
    log_ += text;
  }
  void Sleep(std::uint32_t) override {}
  std::string Take() { return std::exchange(log_, {}); }

 private:
  std::string log_;
};

/// A simulated camera of a type, opened.
class OpenedCamera {
 public:
  explicit OpenedCamera(LONG type) : camera_(CreateDeviceForType(static_cast<std::uint32_t>(type))) {
    SimConfiguration computer;
    const int index = ModelOf(type).family == Family::Sata ? 'E' : 0;
    address_ = {static_cast<int>(type), index};
    computer.cameras = {address_};
    computer.framesPerSecond = 0;
    std::string error;
    sim_ = SimDriverHost::Create(computer, &error);
    EXPECT_NE(sim_, nullptr) << error;
    log_ = std::make_unique<RegisterLog>(*sim_);
    installed_ = std::make_unique<ScopedDriverHost>(*log_);
    EXPECT_EQ(camera_->OpenCamera(index), 1);
    log_->Take();
  }

  /// Plays and reads a frame.
  bool Prepares() {
    Device().SetBufferSamples(kDeliverOnDemand);
    if (Device().Play() != 1) return false;
    COrvaneImage& image = *Device().GetImage();
    std::vector<std::uint8_t> picture(static_cast<std::size_t>(image.GetStride()) *
                                      static_cast<std::size_t>(image.GetHeight()));
    // The first frame that a process reads from a disk-style camera is not shown.
    const bool came =
        Device().GetData(picture.data(), 0) == S_OK || Device().GetData(picture.data(), 0) == S_OK;
    return Device().Stop() == 1 && came;
  }

  CZELDeviceImpl& Device() { return dynamic_cast<CZELDeviceImpl&>(*camera_); }
  CZELDevicePropertyImpl& Property() { return Device().PropertyStore(); }
  std::string TakeLog() { return log_->Take(); }
  std::vector<std::string> ProtocolErrors() { return sim_->Camera(address_)->ProtocolErrors(); }

 private:
  SimCameraAddress address_;
  std::unique_ptr<SimDriverHost> sim_;
  std::unique_ptr<RegisterLog> log_;
  std::unique_ptr<ScopedDriverHost> installed_;
  std::unique_ptr<CZELDevice> camera_;
};

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

/// Each type answers to its number, keeps the ROI law and can prepare its whole frame and its smallest one.
TEST_P(EveryFamily, EveryTypePreparesItsWindows) {
  for (const ModelRow& row : AllModels()) {
    if (row.family != GetParam() || FindSensorMap(static_cast<int>(row.type)) == nullptr) continue;
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

}  // namespace
}  // namespace zel
