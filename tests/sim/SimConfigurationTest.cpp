#include "sim/SimConfiguration.h"

#include <gmock/gmock.h>

#include <map>

#include "platform/Environment.h"
#include "sim/SimEnvironment.h"

namespace zel {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;

TEST(SimCameras, AreRead) {
  const std::pair<const char*, std::vector<SimCameraAddress>> cases[] = {
      {"13", {{13, 0}}},
      {"13@5", {{13, 5}}},
      {"13,13,13@31", {{13, 0}, {13, 1}, {13, 31}}},
      {"1,1@67,1", {{1, 69}, {1, 67}, {1, 70}}},
      {"13,13@0", {{13, 1}, {13, 0}}},  // the one without an index takes what is left
      {" 13 @ 2 , 13 ", {{13, 2}, {13, 0}}},
  };
  for (const auto& [text, expected] : cases) {
    std::vector<SimCameraAddress> cameras{{1, 1}};
    std::string error;
    EXPECT_TRUE(ParseSimCameras(text, &cameras, &error)) << text << ": " << error;
    EXPECT_EQ(cameras, expected) << text;
  }
}

TEST(SimCameras, ErrorsSayWhatIsWrongWhere) {
  std::string tooMany = "13";
  for (int n = 0; n < 32; ++n) tooMany += ",13";
  const std::pair<std::string, const char*> cases[] = {
      {"13,200", "ZELCAM_SIM: position 4: camera type 200 is not one of 0 to 98"},
      {"13@0,13@0", "ZELCAM_SIM: position 6: type 13 index 0 is listed twice"},
      {"13@32", "ZELCAM_SIM: position 4: index \"32\" is not one of 0 to 31"},
      {"13@", "ZELCAM_SIM: position 4: index \"\" is not one of 0 to 31"},
      {"1@64", "ZELCAM_SIM: position 3: index \"64\" is not one of 65 to 90"},
      {"chart", "ZELCAM_SIM: position 1: \"chart\" is not a camera type"},
      {"99999999999", "ZELCAM_SIM: position 1: \"99999999999\" is not a camera type"},
      {"13,", "ZELCAM_SIM: position 4: a camera type is missing"},
      {",13", "ZELCAM_SIM: position 1: a camera type is missing"},
      {" ", "ZELCAM_SIM: position 2: a camera type is missing"},
      {"13x", "ZELCAM_SIM: position 3: \"x\" is not expected here"},
      {"13 13", "ZELCAM_SIM: position 4: \"1\" is not expected here"},
      {tooMany, "ZELCAM_SIM: position 97: more than 32 cameras of type 13"},
  };
  for (const auto& [text, expected] : cases) {
    std::vector<SimCameraAddress> cameras{{1, 1}};
    std::string error;
    EXPECT_FALSE(ParseSimCameras(text, &cameras, &error)) << text;
    EXPECT_EQ(error, expected);
    EXPECT_THAT(cameras, ElementsAre(SimCameraAddress{1, 1}));
  }
}

TEST(SimVariables, ErrorsSayWhatIsWrongWhere) {
  struct Case {
    const char* name;
    const char* text;
    const char* error;
  };
  const Case cases[] = {
      {"ZELCAM_SIM_FAULTS", "drop@7,burn@8",
       "ZELCAM_SIM_FAULTS: position 8: \"burn\" is not one of unplug, drop, stall, short, garbage"},
      {"ZELCAM_SIM_FAULTS", "drop", "ZELCAM_SIM_FAULTS: position 5: \"@\" and a frame number are missing"},
      {"ZELCAM_SIM_FAULTS", "drop@0", "ZELCAM_SIM_FAULTS: position 6: a frame number from 1 on is missing"},
      {"ZELCAM_SIM_FAULTS", "stall@5",
       "ZELCAM_SIM_FAULTS: position 8: a duration like \":2s\" or \":500ms\" is missing"},
      {"ZELCAM_SIM_FAULTS", "stall@5:2",
       "ZELCAM_SIM_FAULTS: position 8: a duration like \":2s\" or \":500ms\" is missing"},
      {"ZELCAM_SIM_FAULTS", "drop@5:2s", "ZELCAM_SIM_FAULTS: position 7: \":\" is not expected here"},
      {"ZELCAM_SIM_FPS", "-1", "ZELCAM_SIM_FPS: \"-1\" is not a number from 0 to 100000"},
      {"ZELCAM_SIM_FPS", "30fps", "ZELCAM_SIM_FPS: \"30fps\" is not a number from 0 to 100000"},
      {"ZELCAM_SIM_TRIGGER", "nan", "ZELCAM_SIM_TRIGGER: \"nan\" is not a number from 0 to 100000"},
      {"ZELCAM_SIM_FOCUS", "256",
       "ZELCAM_SIM_FOCUS: position 1: \"256\" is not a focus position from 0 to 255"},
      {"ZELCAM_SIM_FOCUS", "60,70", "ZELCAM_SIM_FOCUS: position 6: \"@\" and a frame number are missing"},
      {"ZELCAM_SIM_FOCUS", "60,70@9,80@9",
       "ZELCAM_SIM_FOCUS: position 12: a frame number from 10 on is missing"},
      {"ZELCAM_SIM_FOCUS", "60 70", "ZELCAM_SIM_FOCUS: position 4: \"7\" is not expected here"},
      {"ZELCAM_SIM_TRIGGER", "1e9", "ZELCAM_SIM_TRIGGER: \"1e9\" is not a number from 0 to 100000"},
  };
  for (const Case& c : cases) {
    std::map<std::string, std::string> variables{{"ZELCAM_SIM", "13"}};
    variables[c.name] = c.text;
    std::string error;
    EXPECT_FALSE(SimConfigurationFrom([&](const char* name) { return variables[name]; }, &error)) << c.text;
    EXPECT_EQ(error, c.error);
  }
}

TEST(SimVariables, MakeAConfiguration) {
  std::map<std::string, std::string> variables;
  const VariableReader read = [&](const char* name) { return variables[name]; };
  std::string error = "old";
  EXPECT_FALSE(SimConfigurationFrom(read, &error));
  EXPECT_EQ(error, "");

  variables = {{"ZELCAM_SIM", "13"}, {"ZELCAM_SCENE", "chart"}};
  SimConfiguration configuration = SimConfigurationFrom(read, &error).value_or(SimConfiguration{});
  EXPECT_THAT(configuration.cameras, ElementsAre(SimCameraAddress{13, 0}));
  EXPECT_EQ(configuration.scene, "");
  EXPECT_FALSE(configuration.framesPerSecond) << "0 would mean as fast as it is read";

  variables["ZELCAM_SCENE"] = "a b.jpg";
  variables["ZELCAM_SIM_FPS"] = "0";
  variables["ZELCAM_SIM_TRIGGER"] = "2.5";
  variables["ZELCAM_SIM_FOCUS"] = "60,200@100";
  variables["ZELCAM_SIM_FAULTS"] = "unplug@100, stall@50:1.5s,stall@52:20ms,short@9,garbage@12";
  configuration = SimConfigurationFrom(read, &error).value_or(SimConfiguration{});
  EXPECT_EQ(configuration.scene, "a b.jpg");
  EXPECT_EQ(configuration.framesPerSecond, 0.0);
  EXPECT_EQ(configuration.triggerRate, 2.5);
  EXPECT_THAT(configuration.focus, ElementsAre(SimFocus{60, 0}, SimFocus{200, 100}));
  using Kind = SimFault::Kind;
  EXPECT_THAT(configuration.faults,
              ElementsAre(SimFault{Kind::Unplug, 100}, SimFault{Kind::Stall, 50, milliseconds(1500)},
                          SimFault{Kind::Stall, 52, milliseconds(20)}, SimFault{Kind::Short, 9},
                          SimFault{Kind::Garbage, 12}));
}

TEST(SimEnvironment, InstallsOnceAndOnlyWhatItCanRead) {
  struct Step {
    const char* cameras;
    const char* scene;
    const char* error;  // its start
  };
  const Step refused[] = {
      {"", "", ""},
      {"13,200", "", "ZELCAM_SIM: position 4: camera type 200 is not one of 0 to 98"},
      {"13", "no/such/picture.jpg", "ZELCAM_SCENE: "},
  };
  DriverHost* const before = &CurrentDriverHost();
  std::string error;
  for (const Step& step : refused) {
    SetEnvironment("ZELCAM_SIM", step.cameras);
    SetEnvironment("ZELCAM_SCENE", step.scene);
    EXPECT_EQ(InstallSimulatedHostFromEnvironment(&error), nullptr) << step.cameras;
    EXPECT_THAT(error, testing::StartsWith(step.error));
    EXPECT_EQ(error.empty(), *step.error == 0) << error;
    EXPECT_EQ(&CurrentDriverHost(), before);
  }
  SetEnvironment("ZELCAM_SCENE", "chart");
  DriverHost* const host = InstallSimulatedHostFromEnvironment(&error);
  ASSERT_NE(host, nullptr) << error;
  EXPECT_EQ(&CurrentDriverHost(), host);
  SetEnvironment("ZELCAM_SIM", "nonsense");
  EXPECT_EQ(InstallSimulatedHostFromEnvironment(&error), host);
  InstallDriverHost(nullptr);
}

}  // namespace
}  // namespace zel
