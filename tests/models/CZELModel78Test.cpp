#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "imaging/COrvaneImage.h"
#include "models/Factory.h"
#include "sim/SimDriverHost.h"
#include "transport/ScriptedDriverHost.h"
#include "transport/usb3/CZELDeviceImplUSB3.h"
#include "transport/usb3/CZELDevicePropertyImplUSB3.h"

namespace zel {
namespace {

CZELDeviceImplUSB3* MakeCamera() {
  return dynamic_cast<CZELDeviceImplUSB3*>(CreateDeviceForType(78));
}

class CZELModel78 : public testing::Test {
 protected:
  CZELModel78() {
    auto& status = host.sectors[0x20000] = std::vector<std::uint8_t>(512);
    std::copy_n("ORVANE", 6, status.begin());
    status[26] = 0xE0;
    status[27] = 6;
    host.logTransfers = false;
  }
  void Open() {
    ASSERT_EQ(camera->OpenCamera(0), 1);
    EXPECT_THAT(host.TakeLog(), testing::HasSubstr(kWholeFrame));
  }
  /// What opening tells the camera: it has no reset.
  static constexpr auto kWholeFrame =
      "write 2010=0; write 2012=0; write 2014=1320; write 2016=CC0; write 2018=0; "
      "write 3000=0; write 3001=1; write 3002=0; write 3000=1";
  std::string Log() { return host.TakeLog(); }
  LONG Prepare() {
    host.TakeLog();
    return camera->PrepareCapture();
  }
  std::vector<LONG> Shutter() {
    const PropertyRecord& record = property.Record(kShutter);
    return {record.minimum, record.maximum, record.current};
  }
  std::vector<LONG> Window() {
    std::vector<LONG> window(4);
    property.GetROI(&window[0], &window[1], &window[2], &window[3]);
    return window;
  }

  test::ScriptedDriverHost host;
  ScopedDriverHost installed{host};
  std::unique_ptr<CZELDeviceImplUSB3> camera{MakeCamera()};
  CZELDevicePropertyImpl& property = camera->PropertyStore();
};

TEST_F(CZELModel78, SettersClampThenProgramThenStore) {
  using P = CZELDevicePropertyImpl;
  const struct {
    HRESULT (P::*set)(LONG);
    LONG value, id, stored;
    const char* log;
  } rows[] = {
      {&P::SetShutter, 5000, kShutter, 4453, "write 2004=1165"},
      {&P::SetShutter, -9, kShutter, 2, "write 2004=2"},
      {&P::SetShutter, 1000, kShutter, 1000, "write 2004=3E8"},
      {&P::SetDigitalGlobalGain, 1024, kDigitalGlobalGain, 1023, "write 3003=1; write 5=3FF"},
      {&P::SetDigitalGlobalGain, 7, kDigitalGlobalGain, 7, "write 3003=1; write 5=7"},
  };
  EXPECT_EQ(property.SetShutter(100), E_HANDLE);
  EXPECT_EQ(property.SetDigitalGlobalGain(200), E_HANDLE);
  Open();
  EXPECT_EQ(Shutter()[2], 2);
  for (const auto& row : rows) {
    const LONG before = property.Record(row.id).current;
    for (int n = 0; n < (row.id == kShutter ? 4 : 8); ++n) {
      host.faultAt = n;
      EXPECT_EQ((property.*row.set)(row.value), E_FAIL) << row.log << n;
      EXPECT_EQ(property.Record(row.id).current, before) << row.log;
    }
    host.TakeLog();
    EXPECT_EQ((property.*row.set)(row.value), S_OK) << row.log;
    EXPECT_EQ(Log(), row.log);
    EXPECT_EQ(property.Record(row.id).current, row.stored) << row.log;
  }
  for (const auto set : {&P::SetHorMirror, &P::SetVerMirror, &P::SetExtTrigger}) {
    EXPECT_EQ((property.*set)(1), E_NOTIMPL);
  }
  LONG on = 5;
  EXPECT_EQ(property.GetHorMirror(&on), E_NOTIMPL);
  EXPECT_EQ(on, 0);
  EXPECT_EQ(Log(), "");
}

TEST_F(CZELModel78, BinningKeepsThePlaceOfTheExposure) {
  Open();
  EXPECT_EQ(Prepare(), 0) << "without a capture there are no buffers";
  EXPECT_EQ(Shutter(), (std::vector<LONG>{1, 3335, 2}));
  EXPECT_EQ(Prepare(), 0);
  EXPECT_EQ(Shutter()[2], 3) << "the minimum is added to the place each time";
  property.SetShutter(5000);
  EXPECT_EQ(Shutter()[2], 3335);
  host.TakeLog();
  EXPECT_EQ(property.SetModelValue4(1), S_OK);
  EXPECT_EQ(Log(), "write 2004=684");
  EXPECT_EQ(Shutter(), (std::vector<LONG>{1, 1668, 1668}));
  property.SetShutter(500);
  EXPECT_EQ(property.SetModelValue4(0), S_OK);
  EXPECT_EQ(Shutter(), (std::vector<LONG>{1, 3335, 1001}));  // 500 / 1667 x 3334 + 0.5, and 1
  host.faultAt = 0;
  EXPECT_EQ(property.SetModelValue4(1), S_OK);
  EXPECT_EQ(Shutter(), (std::vector<LONG>{1, 1668, 502})) << "the next preparation brings it there";
}

TEST_F(CZELModel78, PreparationProgramsWhatChanged) {
  Open();
  const std::string prepare = "sleep 8; write 3003=1; write 5=64; write 2004=";
  const struct {
    std::function<void()> change;
    std::string log;
    std::vector<LONG> window;
  } rows[] = {
      {[] {}, "", {0, 0, 4896, 3264}},
      {[&] { property.SetModelValue1(0); },
       "write 3000=0; write 3001=1; write 3002=0; write 3000=1; ",
       {0, 0, 4896, 3264}},
      {[&] { property.SetModelValue1(1); },
       "write 3000=0; write 3001=0; write 3002=0; write 3000=1; ",
       {0, 0, 4896, 3264}},
      {[&] { property.SetModelValue1(2); },
       "write 3000=0; write 3001=1; write 3002=1; write 3000=1; ",
       {0, 0, 4896, 3264}},
      {[&] { property.SetModelValue1(3); },
       "write 3000=0; write 3001=0; write 3002=1; write 3000=1; ",
       {0, 0, 4896, 3264}},
      {[&] { property.SetModelValue4(1); },
       "write 2010=0; write 2012=0; write 2014=1320; write 2016=CC0; write 2018=1; ",
       {0, 0, 4896, 1632}},
      {[&] { property.SetModelValue5(8); },
       "write 2010=0; write 2012=0; write 2014=1320; write 2016=CC0; write 2018=3; ",
       {0, 0, 2448, 1632}},
      {[&] { property.SetROI(5, 7, 101, 51); },
       "write 2010=5; write 2012=7; write 2014=65; write 2016=33; write 2018=3; ",
       {5, 7, 50, 25}},
      {[] {}, "write 2010=5; write 2012=7; write 2014=65; write 2016=33; write 2018=3; ", {5, 7, 50, 25}},
  };
  for (const auto& row : rows) {
    row.change();
    Prepare();
    const std::string shutter = "2004=" + [&] {
      char text[8];
      std::snprintf(text, sizeof text, "%X", static_cast<unsigned>(Shutter()[2]));
      return std::string(text);
    }();
    EXPECT_EQ(Log(),
              "write " + shutter + "; " + row.log + "sleep 8; write 3003=1; write 5=64; write " + shutter);
    EXPECT_EQ(Window(), row.window) << row.log;
  }
  EXPECT_EQ(property.SetROI(4893, 0, 4, 3), E_INVALIDARG);
  EXPECT_EQ(property.SetModelValue1(4), E_INVALIDARG);
  property.SetROI(1, 0, 4895, 3264);
  property.SetModelValue1(1);
  for (const int failing : {4, 22, 24, 38}) {  // behind the shutter's four calls
    host.faultAt = failing;
    Prepare();
    EXPECT_EQ(Log().find("sleep"), std::string::npos) << failing;
  }
  Prepare();
  EXPECT_NE(Log().find("write 3001=0"), std::string::npos) << "still to be done";
  camera.reset();
  EXPECT_EQ(host.openHandles, 0);
}

TEST_F(CZELModel78, BayerPhaseFollowsTheWindow) {
  for (LONG n = 0; n < 4; ++n) {
    property.SetROI(10 + n / 2, 20 + n % 2, 100, 100);
    EXPECT_EQ(property.UpdateDerivedSizes(), n);
  }
}

/// The simulated camera sends what the registers say, the library makes the same picture of it.
TEST(CZELModel78Pictures, AreTheSameInEveryReadoutVariant) {
  SimConfiguration computer;
  computer.cameras = {{78, 1}};
  computer.framesPerSecond = 0;
  computer.noise = 0;
  std::string error;
  const auto host = SimDriverHost::Create(computer, &error);
  ASSERT_NE(host, nullptr) << error;
  const ScopedDriverHost installed(*host);
  const std::unique_ptr<CZELDeviceImplUSB3> camera(MakeCamera());
  CZELDevicePropertyImpl& property = camera->PropertyStore();
  ASSERT_EQ(camera->OpenCamera(1), 1);
  EXPECT_EQ(camera->GetCameraID(), 1001);
  camera->SetBufferSamples(kDeliverOnDemand);
  property.SetOutputFormat(0);
  const auto picture = [&] {
    camera->Stop();
    camera->Play();
    property.SetShutter(2);
    HRESULT result = E_FAIL;
    for (int n = 0; n < 2 && result != S_OK; ++n) result = camera->GetData(nullptr, 0);
    EXPECT_EQ(result, S_OK);
    COrvaneImage& image = *camera->GetImage();
    const unsigned char* const first = image.GetBuffer();
    return std::vector(first, first + image.GetStride() * image.GetHeight());
  };
  picture();  // may have cost the process its first frame
  for (const LONG height : {302, 303}) {
    for (const LONG binning : {0, 1}) {
      property.SetROI(351, 401, 640, height);
      property.SetModelValue4(binning);
      property.SetModelValue1(0);
      const auto progressive = picture();
      EXPECT_GT(std::set(progressive.begin(), progressive.end()).size(), 5u);
      for (const LONG variant : {1, 2, 3}) {
        property.SetModelValue1(variant);
        EXPECT_EQ(picture() == progressive, true) << variant << " height " << height << binning;
      }
    }
  }
  EXPECT_EQ(host->Camera({78, 1})->ProtocolErrors(), std::vector<std::string>());
}

}  // namespace
}  // namespace zel
