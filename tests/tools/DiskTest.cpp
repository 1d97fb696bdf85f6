// A disk in a camera's place, and cameras behind disks, as the program shows them.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "api/ZELCam.h"
#include "device/CZELDevice.h"
#include "platform/DriveGuard.h"
#include "sim/SimDriverHost.h"
#include "tools/Tool.h"
#include "tools/support/Camera.h"
#include "tools/support/Output.h"
#include "transport/ScriptedDriverHost.h"

namespace zel::tool {
namespace {

namespace fs = std::filesystem;

/// A computer with one drive, E: or PhysicalDrive0, that keeps what is written to it.
class Computer : public test::ScriptedDriverHost {
 public:
  explicit Computer(std::string refusal = {}) : refusal_(std::move(refusal)) {
    logTransfers = false;
    present = [](const std::u16string& path) {
      return path == u"\\\\.\\E:" || path == u"\\\\.\\PhysicalDrive0";
    };
    beforeRead = [](auto, auto& bytes) { bytes.resize(std::max(bytes.size(), kFrameBytes), 0x55); };
    takeWrite = [this](std::uint64_t position, std::vector<std::uint8_t> bytes) {
      if (acknowledges && bytes[34] != 0) bytes[42] = bytes[34] == 1 ? 2 : 8;
      sectors[position] = std::move(bytes);
    };
  }

  std::unique_ptr<DriverHandle> Open(const OpenRequest& request, DriverError* error) override {
    auto drive = ScriptedDriverHost::Open(request, error);
    return drive ? GuardWrites(std::move(drive), [this] { return refusal_; }) : nullptr;
  }

  bool acknowledges = false;  ///< register requests, as a camera does

 private:
  static constexpr std::size_t kFrameBytes = 8 << 20;  // more than a frame has
  const std::string refusal_;
};

struct Outcome {
  int code = 0;
  std::string out, err;
};

Outcome RunTheTool(std::vector<std::string> arguments) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const int code = RunTool(arguments);
  return {code, testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

class ADisk : public testing::Test {
 protected:
  ~ADisk() override { fs::remove(picture_); }
  std::vector<std::string> Capture(int type, const char* verb) const {
    std::vector<std::string> arguments{verb, "-c", fmt::format("{}@69", type), "-o", picture_.string()};
    if (verb == std::string_view("grab")) arguments.insert(arguments.end(), {"-n", "1"});
    return arguments;
  }
  const fs::path picture_ = fs::temp_directory_path() / "zel-disk-test.bmp";
};

TEST_F(ADisk, IsNoCameraWhenNoRegisterAcknowledges) {
  for (const int type : {1, 2, 3, 4, 5, 6, 7, 8, 35}) {
    for (const char* verb : {"snap", "grab"}) {
      Computer computer;
      const ScopedDriverHost scope(computer);
      const Outcome outcome = RunTheTool(Capture(type, verb));
      EXPECT_EQ(outcome.code, 5) << type;
      EXPECT_EQ(outcome.err,
                fmt::format(
                    "zelcam: error: {}@69 does not answer as a camera: no register access was acknowledged\n"
                    "hint: index 69 is drive E:; is that the camera's?\n",
                    type));
      EXPECT_FALSE(fs::exists(picture_)) << type << verb;
    }
  }
}

TEST_F(ADisk, IsForgivenWhenACameraTakesItsPlace) {
  Computer computer;
  const ScopedDriverHost scope(computer);
  Camera camera({1, 'E'});
  camera.Open();
  EXPECT_THROW(camera.Play(), ToolError);
  for (const bool acknowledges : {true, false}) {
    computer.acknowledges = acknowledges;
    EXPECT_NO_THROW(camera.Play()) << "one that ever acknowledged is a camera";
    camera.Stop();
  }
}

TEST_F(ADisk, MayBeAConverterWhichHasNoSensor) {
  Computer computer;
  const ScopedDriverHost scope(computer);
  std::vector<std::string> snap = Capture(0, "snap");
  snap.insert(snap.end(), {"--set", "roi-width=64", "--set", "roi-height=48"});
  const Outcome outcome = RunTheTool(snap);
  EXPECT_EQ(outcome.code, 0) << outcome.err;
  EXPECT_TRUE(fs::exists(picture_));
  // This one announces its frames, which a disk does not.
  EXPECT_EQ(RunTheTool({"trace", "-c", "39@69", "open", "play"}).err, "");
}

TEST_F(ADisk, ThatIsGuardedIsLeftAlone) {
  Computer computer("E: holds letters: nothing is written to it; X=E allows it");
  const ScopedDriverHost scope(computer);
  for (const int type : {0, 1}) {
    const Outcome outcome = RunTheTool(Capture(type, "snap"));
    EXPECT_EQ(outcome.code, 4);
    EXPECT_TRUE(
        outcome.err.ends_with("can't be set: E: holds letters: nothing is written to it; X=E allows it\n"))
        << outcome.err;
    EXPECT_EQ(outcome.err.find("letters"), outcome.err.rfind("letters")) << "told once";
  }
  const Outcome trace = RunTheTool({"trace", "-c", "1@69", "open", "reg:1=2"});
  EXPECT_NE(trace.err.find("E: holds letters"), std::string::npos) << trace.err;
  EXPECT_FALSE(fs::exists(picture_));
  EXPECT_EQ(computer.sectors.size(), 1u) << "the one that was read";
}

TEST_F(ADisk, WithASignatureIsGuardedToo) {
  Computer computer("PhysicalDrive0 holds letters: nothing is written to it; X allows it");
  auto& status = computer.sectors[0x20000] = {'O', 'R', 'V', 'A', 'N', 'E'};
  status.resize(512);
  status[26] = 0x70;  // type 44
  status[27] = 2;
  const ScopedDriverHost scope(computer);
  const Outcome outcome = RunTheTool({"snap", "-c", "44@0", "-o", picture_.string()});
  EXPECT_EQ(outcome.code, 4);
  EXPECT_NE(outcome.err.find("#44 can't be set: PhysicalDrive0 holds letters"), std::string::npos)
      << outcome.err;
  EXPECT_EQ(computer.sectors.size(), 1u);
}

/// What a program of the published interfaces gets, and what it leaves on standard error.
std::string PlayedByAProgram(LONG type, HRESULT frame) {
  testing::internal::CaptureStderr();
  IZELBuilder* builder = nullptr;
  IZELCamera* camera = nullptr;
  EXPECT_EQ(ZELCreateBuilder(&builder), S_OK);
  EXPECT_EQ(builder->CreateCamera(type, &camera), S_OK);
  EXPECT_EQ(camera->OpenCamera('E', nullptr), S_OK);
  camera->SetBufferSamples(kDeliverOnDemand);
  for (int n = 0; n < 2; ++n) {
    EXPECT_EQ(camera->Play(nullptr), S_OK);
    LONG unused = 0;
    VARIANT destination{};
    destination.vt = VT_BYREF | VT_I4;
    destination.byref = &unused;
    EXPECT_EQ(camera->GetData(destination, nullptr), frame);
    EXPECT_EQ(camera->Stop(nullptr), S_OK);
  }
  camera->Release();
  builder->Release();
  return testing::internal::GetCapturedStderr();
}

TEST_F(ADisk, IsToldInTheLogOnceAndKeepsTheResults) {
  {
    Computer computer;
    const ScopedDriverHost scope(computer);
    EXPECT_EQ(PlayedByAProgram(2, S_OK),
              "2@69 does not answer as a camera: no register access was acknowledged\n");
  }
  Computer guarded("E: holds stamps: nothing is written to it");
  const ScopedDriverHost scope(guarded);
  EXPECT_EQ(PlayedByAProgram(2, E_FAIL), "E: holds stamps: nothing is written to it\n");
}

TEST(Trace, ShowsNoRegisterValueBeforeItIsRead) {
  SimConfiguration configuration;
  configuration.cameras = {{1, 'E'}};
  configuration.framesPerSecond = 0;
  std::string error;
  const auto camera = SimDriverHost::Create(configuration, &error);
  const ScopedDriverHost scope(*camera);
  const Outcome outcome =
      RunTheTool({"trace", "open", "set:shutter=77", "play", "reg:9", "frame", "stop", "reg:9"});
  std::vector<Json> values;  // of what concerns register 9, in order
  std::istringstream lines(outcome.out);
  for (std::string text; std::getline(lines, text);) {
    const Json line = Json::parse(text);
    const bool isResult = line.contains("result") && line["step"] == "reg:9";
    const bool isRead = line.value("register", 0) == 9 && line["access"] == "read" && line["step"] != "play";
    if (isResult || isRead) values.push_back({line["step"], line["value"]});
  }
  EXPECT_EQ(Json(values), Json::parse(R"([["reg:9",null],["frame",77],["reg:9",77],["reg:9",77]])"))
      << outcome.out;
}

}  // namespace
}  // namespace zel::tool
