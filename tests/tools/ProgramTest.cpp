// The program itself, run as a user runs it.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "TemporaryFolder.h"
#include "platform/Environment.h"

namespace zel::tool {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

struct Outcome {
  int code = 0;
  std::string out, err;

  std::vector<json> Lines() const {
    std::vector<json> lines;
    std::istringstream text(out);
    for (std::string line; std::getline(text, line);) lines.push_back(json::parse(line));
    return lines;
  }
};

// Made whole before a test changes the folder, and with it maybe the drive.
const fs::path kProgram = fs::absolute(fs::path(ZELCAM_PROGRAM).make_preferred());
const fs::path kDocs = fs::absolute(fs::path(ZELCAM_DOCS).make_preferred());

std::string Contents(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// A machine that is busy may take longer for a frame than a camera is given.
const std::string kPatience = " --set timeout=600000";

/// Runs in an empty folder of its own with simulated cameras as fast as they are read.
class Program : public ::testing::Test {
 protected:
  void SetUp() override {
    fs::current_path(folder_.Path());
    for (const char* const name : {"ZELCAM_SIM", "ZELCAM_SIM_FAULTS", "ZELCAM_SCENE"})
      SetEnvironment(name, "");
    SetEnvironment("ZELCAM_SIM_FPS", "0");
  }
  void TearDown() override { fs::current_path(previous_); }

  static Outcome Run(const std::string& arguments) {
    const std::string line = fmt::format("\"{}\" {} >.out 2>.err", kProgram.string(), arguments);
    // The command interpreter of Windows takes off the outermost quotes.
    const bool isWindows = fs::path::preferred_separator == '\\';
    const int status = std::system((isWindows ? fmt::format("\"{}\"", line) : line).c_str());
    // Where a status is more than the exit code, the code is its second byte.
    Outcome outcome{isWindows ? status : status >> 8, Contents(".out"), Contents(".err")};
    fs::remove(".out");
    fs::remove(".err");
    return outcome;
  }

  /// Names of the files that the runs so far left.
  static std::set<std::string> Files() {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(".")) names.insert(entry.path().filename().string());
    return names;
  }

 private:
  const test::TemporaryFolder folder_;
  const fs::path previous_ = fs::current_path();
};

TEST_F(Program, AnswersBadInputAndLeavesNothing) {
  struct Row {
    const char* arguments;
    int code;
    const char* error;
  };
  std::ofstream("ten.raw") << "0123456789";
  std::ofstream("there.bmp") << "mine";
  const Row rows[] = {
      {"", 2, "a verb is missing"},
      {"lst", 2, "did you mean 'list'?"},
      {"--sim 13 list more", 2, "'more' is one argument too many"},
      {"list --frobnicate", 2, "unknown option '--frobnicate'"},
      {"-q -v list", 2, "excludes"},
      {"--sim 13,oops list", 2, "--sim: position 4: \"oops\" is not a camera type"},
      {"info", 3, "no camera answers"},
      {"-c 13 info", 3, "ZEL USB 2.0 1280x1024 #13 can't be opened: not found"},
      {"-c 99 info", 2, "unknown camera type 99"},
      {"--sim 13 -c 13@32 info", 2, "camera index 32 is out of range"},
      {"--sim 13,13 info", 2, "-c 13@1"},
      {"--sim 13 get shuter", 2, "did you mean 'shutter'?"},
      {"--sim 13 set shutter=20000", 2,
       "zelcam: error: shutter 20000 is above the maximum 16383 of ZEL USB 2.0 1280x1024 #13\n"},
      {"--sim 13 set", 2, "SETTING is required"},
      {"--sim 13 snap", 2, "--output is required"},
      {"--sim 13 snap -o a.png", 2, "'a.png' ends in none of .bmp, .jpg, .jpeg, .raw"},
      {"--sim 13 snap -o none/a.bmp", 2, "folder 'none' does not exist"},
      {"--sim 13 snap -o there.bmp", 2, "'there.bmp' exists already"},
      {"--sim 13 snap -o a.bmp --set strobe=1", 2, "strobe is not offered"},
      {"--sim 13 snap -o a.bmp --set output-format=0", 2, "raw samples are no picture"},
      {"--sim 13 grab -n 0", 2, "--frames"},
      {"--sim 13 grab -t 10", 2, "'10' is not a duration"},
      {"--sim 13 grab -n 1 --mode push", 2, "--mode"},
      {"--sim 13 grab -n 2 -o a.bmp", 2, "put {frame}"},
      {"--sim 13 trace open set:shuter=1", 2, "did you mean 'shutter'?"},
      {"develop ten.raw --width 1280 --height 1024 -o a.bmp", 2,
       "ten.raw has 10 bytes, 1280 x 1024 8-bit mosaic needs 1310720"},
      {"develop none.raw --width 5 --height 2 -o a.bmp", 2, "'none.raw' can't be read"},
      {"develop ten.raw --width 5 -o a.bmp", 2, "--height is required"},
      {"develop ten.raw --width 5 --height 2 --saturation 11 -o a.bmp", 2,
       "--saturation: 11 is not in -10..10"},
      {"develop ten.raw --width 5 --height 2 --image-class 24 --output-format 5 -o a.bmp", 2,
       "does not become output format 5"},
      {"develop ten.raw --width 5 --height 2 -o a.raw", 2, "'a.raw' ends in none of"},
      {"develop ten.raw --width 5 --height 2 --output-format 2 -o a.bmp", 2, "--output-format"},
      {"develop ten.raw --width 5 --height 2 --output-format 0 -o a.bmp", 2, "raw samples are no picture"},
  };
  for (const Row& row : rows) {
    const Outcome outcome = Run(row.arguments);
    EXPECT_EQ(outcome.code, row.code) << row.arguments << "\n" << outcome.err;
    EXPECT_NE(outcome.err.find(row.error), std::string::npos) << row.arguments << "\n" << outcome.err;
    EXPECT_EQ(outcome.out, "") << row.arguments;
  }
  EXPECT_EQ(Files(), (std::set<std::string>{"ten.raw", "there.bmp"}));
  EXPECT_EQ(Contents("there.bmp"), "mine");
}

TEST_F(Program, ReportsABadEnvironment) {
  SetEnvironment("ZELCAM_SIM", "13@x");
  Outcome outcome = Run("list");
  EXPECT_EQ(outcome.code, 2);
  EXPECT_NE(outcome.err.find("ZELCAM_SIM: position 4"), std::string::npos) << outcome.err;

  SetEnvironment("ZELCAM_SCENE", "none.jpg");
  outcome = Run("--sim 13 snap -o a.bmp");
  EXPECT_EQ(outcome.code, 2);
  EXPECT_NE(outcome.err.find("ZELCAM_SCENE: none.jpg"), std::string::npos) << outcome.err;
}

TEST_F(Program, HelpIsAResult) {
  EXPECT_NE(Run("--help").out.find("develop"), std::string::npos);
  const Outcome outcome = Run("grab --help");
  EXPECT_EQ(outcome.code, 0);
  EXPECT_NE(outcome.out.find("--mode"), std::string::npos);
  EXPECT_EQ(outcome.err, "");
}

TEST_F(Program, ThePageOfCameraTypesIsCurrent) {
  std::string page = Contents(kDocs / "cameras.md"), written = Run("types --markdown").out;
  for (std::string* text : {&page, &written}) std::erase(*text, '\r');
  for (const char* row : {"| 0 | ZEL SATA", "| 13 | ZEL USB 2.0", "| 98 | ZEL USB3T2", "## Peculiarities"})
    EXPECT_NE(page.find(row), std::string::npos) << row;
  EXPECT_TRUE(page == written) << "write it anew: zelcam types --markdown > docs/cameras.md";
}

TEST_F(Program, ListsTypesAndCameras) {
  const json types = json::parse(Run("types --json").out);
  ASSERT_EQ(types.size(), 99u);
  EXPECT_EQ(types[13], json::parse(R"({"type":13,"class":"CZELModel13","name":"ZEL USB 2.0 1280x1024 #13",
      "family":"USB 2.0","width":1280,"height":1024,"min_width":4,"min_height":3,
      "gain":{"min":0,"max":127,"default":14,"supported":true},
      "shutter":{"min":0,"max":16383,"default":1049,"supported":true},"subsampling":null})"));
  EXPECT_TRUE(types[7]["gain"].is_null() && types[7]["min_width"].is_null());
  EXPECT_EQ(types[4]["gain"]["supported"], false);
  EXPECT_TRUE(types[97]["shutter"]["default"].is_null());
  EXPECT_EQ(types[98]["subsampling"], 3);

  EXPECT_EQ(json::parse(Run("list --json").out), json::array());
  const json list = json::parse(Run("--json --sim 13@3,13 list").out);
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0]["camera"], "13@0");
  EXPECT_EQ(list[1]["camera"], "13@3");
}

TEST_F(Program, SetShowsWhatTheCameraHas) {
  const Outcome outcome = Run("--sim 13 set shutter=0x100 roi-left=640 roi-width=640 --json");
  const json properties = outcome.Lines().at(0)["properties"];
  ASSERT_EQ(properties.size(), 3u) << outcome.err;
  EXPECT_EQ(properties[0]["name"], "shutter");
  EXPECT_EQ(properties[0]["id"], 13);
  EXPECT_EQ(properties[0]["max"], 16383);
  EXPECT_EQ(properties[0]["default"], 1049);
  EXPECT_EQ(properties[0]["current"], 256);
  EXPECT_EQ(properties[1]["current"], 640);

  const json all = Run("--sim 13 get --json").Lines().at(0)["properties"];
  EXPECT_GT(all.size(), 65u);
  EXPECT_TRUE(
      std::ranges::any_of(all, [](const json& p) { return p["name"] == "strobe" && !p["supported"]; }));
}

TEST_F(Program, GrabsInEveryMode) {
  for (const std::string mode : {"callback", "queue", "ondemand"}) {
    for (const std::string ending : {"bmp", "jpg", "raw"}) {
      const Outcome outcome =
          Run("--sim 13 grab --json -n 2 --set roi-width=64 --set roi-height=48" + kPatience + " --mode " +
              mode + " -o \"" + mode + "-{frame:02}." + ending + "\"");
      ASSERT_EQ(outcome.code, 0) << outcome.err;
      const std::vector<json> lines = outcome.Lines();
      ASSERT_EQ(lines.size(), 3u) << outcome.out;
      EXPECT_EQ(lines[1]["frame"], 2);
      EXPECT_EQ(lines[1]["bytes"], 64 * 48);
      EXPECT_EQ(lines[1]["file"], mode + "-02." + ending);
      EXPECT_EQ(lines[2]["frames"], 2);
      EXPECT_TRUE(lines[2]["dropped"].is_number_integer());
      EXPECT_NE(outcome.err.find("2 frames in "), std::string::npos) << outcome.err;
    }
    EXPECT_EQ(fs::file_size(mode + "-01.raw"), 64u * 48);
    EXPECT_EQ(fs::file_size(mode + "-02.bmp"), 54u + 64 * 48 * 4);
  }
  EXPECT_EQ(Files().size(), 18u + 6) << "each raw file with its description";
  // The number of the last frame is unknown, so every old file counts.
  EXPECT_EQ(Run("--sim 13 grab -t 1s -o \"queue-{frame:02}.bmp\"").code, 2);
  EXPECT_EQ(Run("--sim 13 grab -n 1 -o \"queue-{frame:02}.bmp\" --force -q" + kPatience).err, "");
}

TEST_F(Program, TellsATimeoutFromAVanishedCamera) {
  struct Row {
    const char* fault;
    std::string options;
    int code, atLeast;
  };
  // On a busy machine the first frame may be too late as well.
  const std::string impatience = " --set timeout=500";
  const Row rows[] = {{"unplug@3", "callback" + kPatience, 7, 1},
                      {"unplug@3", "queue --set timeout=10000", 7, 1},  // waited out in full
                      {"unplug@3", "ondemand" + kPatience, 7, 1},
                      {"stall@2:3600s", "queue" + impatience, 5, 0},
                      {"stall@2:3600s", "callback" + impatience, 5, 0}};
  for (const Row& row : rows) {
    SetEnvironment("ZELCAM_SIM_FAULTS", row.fault);
    const Outcome outcome = Run("--sim 13 grab -n 9 --json --mode " + row.options);
    EXPECT_EQ(outcome.code, row.code) << row.fault << " " << row.options << "\n" << outcome.err;
    const std::vector<json> lines = outcome.Lines();
    ASSERT_FALSE(lines.empty());
    EXPECT_GE(lines.back()["frames"], row.atLeast) << "the summary comes all the same";
  }
}

TEST_F(Program, ReplaysARecordedSessionWithoutTheCamera) {
  for (const char* const type : {"13", "67", "78", "98", "1@69"}) {
    const Outcome grab = Run(fmt::format(
        "--sim {} grab -n 3 --set shutter=100 --set roi-width=64 --set roi-height=48 --record {}.zel{}", type,
        type, kPatience));
    ASSERT_EQ(grab.code, 0) << grab.err;
    const Outcome replay = Run(fmt::format("replay {}.zel --json", type));
    EXPECT_EQ(replay.code, 0) << replay.out << replay.err;
    const json result = replay.Lines().at(0);
    EXPECT_EQ(result["identical"], true);
    EXPECT_EQ(result["mode"], "ondemand");
    EXPECT_EQ(result["frames"], 3);
    EXPECT_GT(result["calls_matched"], 15);
  }
  // Timing decides how many frames the workers read.
  const std::string workers = "--sim 13 grab -n 2 --set roi-height=48 --mode callback --record workers.zel";
  ASSERT_EQ(Run(workers + kPatience).code, 0);
  EXPECT_EQ(Run("replay workers.zel").code, 0);
  // Failures are played back, too.
  SetEnvironment("ZELCAM_SIM_FAULTS", "unplug@2");
  EXPECT_EQ(Run("--sim 13 grab -n 5 --set roi-height=48 --record gone.zel" + kPatience).code, 7);
  EXPECT_EQ(Run("-c 13 grab -n 1 --record never.zel").code, 3);
  for (const char* const file : {"gone.zel", "never.zel"}) {
    const Outcome replay = Run(fmt::format("replay {}", file));
    EXPECT_EQ(replay.code, 0) << file << replay.out << replay.err;
  }

  // As if the recorded library had set the shutter to 101.
  std::string session = Contents("13.zel");
  const std::size_t shutter = session.find(std::string("\x04\x09\x00\x64", 4));
  ASSERT_NE(shutter, std::string::npos);
  ++session[shutter + 3];
  std::ofstream("other.zel", std::ios::binary) << session;
  const Outcome other = Run("replay other.zel");
  EXPECT_EQ(other.code, 1);
  EXPECT_NE(other.out.find(
                "ZelUsbBD-0, open 2: expected control 0x222051 04 09 00 65, the library sent 04 09 00 64"),
            std::string::npos)
      << other.out;

  std::ofstream("cut.zel", std::ios::binary) << session.substr(0, session.size() / 2);
  EXPECT_NE(Run("replay cut.zel").err.find("'cut.zel' can't be read: record"), std::string::npos);
  for (const char* const arguments :
       {"replay cut.zel", "replay none.zel", "--sim 13 grab -n 1 --record 13.zel"}) {
    EXPECT_EQ(Run(arguments).code, 2) << arguments;
  }
}

TEST_F(Program, TracesWhatReachesTheDriver) {
  const Outcome outcome = Run("--sim 13 trace open set:shutter=20000 get:shutter reg:9 play frame stop");
  ASSERT_EQ(outcome.code, 0) << outcome.err;
  std::map<std::string, std::vector<json>> steps;
  for (const json& line : outcome.Lines()) steps[line["step"]].push_back(line);
  EXPECT_EQ(outcome.Lines().front()["step"], "open") << "choosing the camera is not part of the trace";

  const auto& set = steps["set:shutter=20000"];
  ASSERT_EQ(set.size(), 3u) << outcome.out;
  EXPECT_EQ(set[0]["code"], "0x222051");
  // 20000 masked to 14 bits.
  EXPECT_EQ(set[0]["out"].get<std::string>().substr(0, 10), "04090e2000");
  EXPECT_EQ(set[1]["register"], 9);
  EXPECT_EQ(set[1]["value"], 3616);
  EXPECT_EQ(set[2]["result"], "0x00000000");
  EXPECT_EQ(steps["get:shutter"].back()["value"], 3616);
  EXPECT_EQ(steps["reg:9"].back()["value"], 3616);

  const auto& frame = steps["frame"];
  ASSERT_EQ(frame.size(), 3u) << "one frame is one request, one read and the result";
  EXPECT_EQ(frame[0]["out"].get<std::string>().substr(0, 4), "0200");
  EXPECT_EQ(frame[1]["out_size"], 1556480);
}

TEST_F(Program, TraceShowsAFailedOpen) {
  const Outcome outcome = Run("-c 13 trace open play frame");
  EXPECT_EQ(outcome.code, 3);
  const std::vector<json> lines = outcome.Lines();
  EXPECT_EQ(lines.at(0)["ok"], false);
  EXPECT_EQ(lines.at(1)["result"], "0x80070006");
  EXPECT_TRUE(std::ranges::any_of(lines, [](const json& line) {
    return line["step"] == "frame" && line.value("result", "") == "0x80004005";
  }));
}

TEST_F(Program, DevelopsARawFileAsTheCameraWould) {
  const char* const kSettings[] = {
      "--set roi-left=41 --set roi-top=7 --set roi-width=640 --set roi-height=300 --set saturation=4 --set "
      "gamma=70",
      "--set trans-mode=1 --set contrast=20 --set hor-mirror=1 --set roi-height=100",
      "--set contrast=20 --set auto-white-balance=1 --set bayer-decoding-method=1 --set roi-height=100",
      "--set output-format=4 --set color-gain-red=150 --set roi-height=100"};
  for (const char* const settings : kSettings) {
    ASSERT_EQ(Run(fmt::format("--sim 13 snap -o camera.bmp --force {}", settings)).code, 0);
    ASSERT_EQ(Run(fmt::format("--sim 13 snap -o a.raw --force {}", settings)).code, 0);
    const Outcome outcome = Run("develop a.raw -o developed.bmp --force");
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_TRUE(Contents("camera.bmp") == Contents("developed.bmp")) << settings;
  }
  const json described = json::parse(Contents("a.raw.json"));
  EXPECT_EQ(described["type"], 13);
  EXPECT_EQ(described["width"], 1280);
  EXPECT_EQ(described["bits"], 8);
  EXPECT_EQ(described["settings"]["color-gain-red"], 150);
  // The command line goes first.
  EXPECT_EQ(Run("develop a.raw -o small.bmp --width 64 --json").Lines().at(0)["source_width"], 1280);
  EXPECT_EQ(Run("--sim 13 snap -o a.raw").code, 2);
  fs::remove("a.raw");
  EXPECT_NE(Run("--sim 13 snap -o a.raw").err.find("'a.raw.json' exists already"), std::string::npos);
  std::ofstream("a.raw") << "x";
  json other = described, wide = described;
  other["settings"]["saturation"] = 11;
  wide["width"] = 1LL << 40;
  for (const std::string& text :
       {std::string(), std::string("[]"), std::string("{\"width\": \"8\"}"), other.dump(), wide.dump()}) {
    std::ofstream("a.raw.json") << text;
    const Outcome outcome = Run("develop a.raw -o b.bmp");
    EXPECT_EQ(outcome.code, 2) << text;
    EXPECT_NE(outcome.err.find("'a.raw.json' does not describe a raw frame"), std::string::npos)
        << outcome.err;
  }
}

TEST_F(Program, DevelopsAKeptFrame) {
  ASSERT_EQ(Run("--sim 13 snap -o a.raw" + kPatience).code, 0);
  ASSERT_EQ(fs::file_size("a.raw"), 1310720u);
  const std::string develop = "develop a.raw --height 1024 --json --force ";
  const json plain = Run(develop + "--width 1280 -o a.bgra").Lines().at(0);
  EXPECT_EQ(plain["stride"], 5120);
  EXPECT_EQ(fs::file_size("a.bgra"), 5120u * 1024);
  const int luminance = plain["mean_luminance"];

  struct Row {
    const char *options, *key;
    int atLeast, atMost;
  };
  const Row rows[] = {
      {"--brightness 40 -o a.bmp", "mean_luminance", luminance + 20, 255},
      {"--brightness -40 -o a.jpg", "mean_luminance", 0, luminance - 20},
      {"--gain-r 64 --gain-b 200 -o a.bmp", "gain_b", 200, 200},
      {"--awb 1 --gain-r 64 -o a.bmp", "gain_r", 65, 1000},
      {"--two-tap --dot-enabled --white-pixel --colorful 0 -o a.bmp", "stride", 5120, 5120},
      {"--color-matrix 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 1 -o a.bmp", "mean_luminance", 0, 0},
      {"--image-class 24 -o a.bmp", "stride", 3840, 3840},
      {"--width 320 --source-width 640 --bits 16 -o a.bmp", "width", 320, 320},
  };
  for (const Row& row : rows) {
    const bool sized = std::string_view(row.options).starts_with("--width");
    const Outcome outcome = Run(develop + (sized ? "" : "--width 1280 ") + row.options);
    ASSERT_EQ(outcome.code, 0) << row.options << "\n" << outcome.err;
    const int value = outcome.Lines().at(0)[row.key];
    EXPECT_GE(value, row.atLeast) << row.options;
    EXPECT_LE(value, row.atMost) << row.options;
  }
}

}  // namespace
}  // namespace zel::tool
