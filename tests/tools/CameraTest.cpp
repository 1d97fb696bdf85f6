#include "tools/support/Camera.h"

#include <gtest/gtest.h>

#include "sim/SimDriverHost.h"
#include "tools/support/PropertySettings.h"
#include "tools/support/Watchdog.h"

namespace zel::tool {
namespace {

/// Nothing but refusals.
class RefusingHost : public DriverHost {
 public:
  explicit RefusingHost(DriverError error) : error_(error) {}
  std::unique_ptr<DriverHandle> Open(const OpenRequest&, DriverError* error) override {
    *error = error_;
    return nullptr;
  }
  std::optional<std::u16string> InterfacePath(const GUID&, std::uint32_t) override { return std::nullopt; }
  void Sleep(std::uint32_t) override {}
  std::uint64_t Milliseconds() override { return 0; }
  void ShowMessage(std::u16string_view) override {}

 private:
  DriverError error_;
};

template <class Body>
std::string ErrorOf(Body&& body) {
  try {
    body();
    return "none";
  } catch (const ToolError& error) {
    return std::to_string(error.Code()) + " " + error.what();
  }
}

std::unique_ptr<SimDriverHost> Simulated(std::vector<SimCameraAddress> cameras) {
  SimConfiguration configuration;
  configuration.cameras = std::move(cameras);
  configuration.framesPerSecond = 0;
  std::string error;
  return SimDriverHost::Create(configuration, &error);
}

TEST(Camera, OpenTellsWhyNot) {
  struct Row {
    DriverError reason;
    const char* error;
  };
  const Row rows[] = {
      {DriverError::AccessDenied, "4 ZEL USB 2.0 1280x1024 #13@2 can't be opened: access denied"},
      {DriverError::SharingViolation, "4 ZEL USB 2.0 1280x1024 #13@2 can't be opened: in use"},
      {DriverError::FileNotFound, "3 ZEL USB 2.0 1280x1024 #13@2 can't be opened: not found"},
  };
  for (const Row& row : rows) {
    RefusingHost host(row.reason);
    const ScopedDriverHost scope(host);
    Camera camera({13, 2});
    EXPECT_EQ(ErrorOf([&] { camera.Open(); }), row.error);
  }
}

TEST(Camera, SelectionByText) {
  EXPECT_EQ(SelectCamera("13"), (CameraId{13, 0}));
  EXPECT_EQ(SelectCamera("13@31"), (CameraId{13, 31}));
  struct Row {
    const char *text, *error;
  };
  const Row rows[] = {
      {"x", "2 camera 'x' is not TYPE or TYPE@INDEX"},
      {"13@", "2 camera '13@' is not TYPE or TYPE@INDEX"},
      {"@1", "2 camera '@1' is not TYPE or TYPE@INDEX"},
      {"99", "2 unknown camera type 99: types are 0 to 98"},
      {"-1", "2 unknown camera type -1: types are 0 to 98"},
      {"13@32", "2 camera index 32 is out of range: ZEL USB 2.0 1280x1024 #13 has indexes 0 to 31"},
      {"13@-1", "2 camera index -1 is out of range: ZEL USB 2.0 1280x1024 #13 has indexes 0 to 31"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(ErrorOf([&] { Camera camera(SelectCamera(row.text)); }), row.error) << row.text;
  }
}

TEST(Camera, SelectionOfTheOnlyOne) {
  {
    RefusingHost nothing(DriverError::FileNotFound);
    const ScopedDriverHost scope(nothing);
    EXPECT_EQ(ErrorOf([] { SelectCamera(""); }), "3 no camera answers");
  }
  const auto one = Simulated({{13, 4}});
  {
    const ScopedDriverHost scope(*one);
    EXPECT_EQ(SelectCamera(""), (CameraId{13, 4}));
  }
  // No type claims another one's disk, and a SATA camera is found although it is never valid.
  for (const CameraId id : {CameraId{78, 3}, CameraId{1, 'Q'}}) {
    const auto drive = Simulated({{id.type, id.index}});
    const ScopedDriverHost scope(*drive);
    EXPECT_EQ(SelectCamera(""), id);
  }
  const auto two = Simulated({{13, 0}, {13, 4}});
  const ScopedDriverHost scope(*two);
  const std::string error = ErrorOf([] { SelectCamera(""); });
  EXPECT_EQ(error.substr(0, 2), "2 ");
  EXPECT_NE(error.find("-c 13@4"), std::string::npos) << error;
}

/// An open simulated camera.
class OpenCamera : public ::testing::Test {
 protected:
  std::string Apply(const std::vector<std::string>& settings) {
    return ErrorOf([&] { ApplySettings(camera_, ParseSettings(settings)); });
  }
  LONG Current(std::string_view name) {
    return ReadProperty(camera_, FindProperty(name)).current.value_or(-1);
  }
  void SetUp() override { camera_.Open(); }

  const std::unique_ptr<SimDriverHost> host_ = Simulated({{13, 0}});
  const ScopedDriverHost scope_{*host_};
  Camera camera_{{13, 0}};
};

TEST_F(OpenCamera, SettingsAreAllCheckedBeforeOneIsMade) {
  struct Row {
    const char *setting, *error;
  };
  const Row rows[] = {
      {"shutter=16384", "2 shutter 16384 is above the maximum 16383 of ZEL USB 2.0 1280x1024 #13"},
      {"hue=-1", "2 hue -1 is below the minimum 0 of ZEL USB 2.0 1280x1024 #13"},
      {"bayer-mode=4", "2 bayer-mode 4 is above the maximum 3 of ZEL USB 2.0 1280x1024 #13"},
      {"strobe=1", "2 strobe is not offered by ZEL USB 2.0 1280x1024 #13"},
      {"roi-left=1",
       "2 window 1,0 1280x1024 reaches beyond the 1280x1024 pixels of ZEL USB 2.0 1280x1024 #13"},
      {"mark=1", "2 mark can only be read"},
      {"hue", "2 'hue' is not NAME=VALUE"},
      {"hue=red", "2 hue: 'red' is not a number"},
      {"hue=", "2 hue: '' is not a number"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Apply({"digital-global-gain=99", row.setting}), row.error);
    EXPECT_EQ(Current("digital-global-gain"), 14) << row.setting;
  }
}

TEST_F(OpenCamera, WindowIsSetAsAWhole) {
  // One after the other, the left edge would be refused beside the full width.
  EXPECT_EQ(Apply({"roi-left=640", "shutter=0x100", "roi-width=640", "roi-top=24", "roi-height=1000"}),
            "none");
  EXPECT_EQ(Current("roi-left"), 640);
  EXPECT_EQ(Current("roi-height"), 1000);
  EXPECT_EQ(Current("shutter"), 256);
}

TEST_F(OpenCamera, SilenceIsATimeoutUnlessATriggerIsAwaited) {
  ASSERT_EQ(Apply({"timeout=0"}), "none");
  EXPECT_EQ(ErrorOf([&] { Watchdog(camera_).NoFrame(); }),
            "5 no frame from ZEL USB 2.0 1280x1024 #13 within 0 ms");
  ASSERT_EQ(Apply({"ext-trigger=1"}), "none");
  EXPECT_EQ(ErrorOf([&] { Watchdog(camera_).NoFrame(); }), "none");
}

}  // namespace
}  // namespace zel::tool
