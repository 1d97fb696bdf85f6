// The example script, run by the system's script host, and the picture it saves.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "TemporaryFolder.h"
#include "api/windows/Process.h"
#include "api/windows/ServerFixture.h"
#include "imaging/PictureReader.h"
#include "sim/FrameCode.h"
#include "sim/TestChart.h"

namespace zel::test {
namespace {

struct Spot {
  int x = 0, y = 0;
  int strength = -0x10000;
};

/// Where the chart is most of one colour, in comparison with the other two.
Spot Strongest(const Scene& chart, std::uint16_t LinearRgb::*colour) {
  Spot best;
  std::vector<LinearRgb> row(static_cast<std::size_t>(chart.Width()));
  for (int y = 0; y < chart.Height(); y += 8) {
    chart.RenderRow(y, row.data());
    for (int x = 0; x < chart.Width(); x += 8) {
      const LinearRgb& light = row[static_cast<std::size_t>(x)];
      const int strength = 2 * light.*colour - (light.r + light.g + light.b - light.*colour);
      if (strength > best.strength) best = {x, y, strength};
    }
  }
  return best;
}

class Script : public Server {
 protected:
  void SetUp() override { ASSERT_EQ(Entry<HRESULT (*)()>("DllRegisterServer")(), S_OK); }
  void TearDown() override {
    Entry<HRESULT (*)()>("DllUnregisterServer")();
    Server::TearDown();
  }

  int RunScript() const {
    std::filesystem::remove(picture_);
    const auto script = std::filesystem::path(ModulePath()).replace_filename("capture.vbs");
    return RunProgram(L"cmd.exe", L"/c cscript.exe //nologo \"" + script.wstring() + L"\" \"" +
                                      picture_.wstring() + L"\" > \"" + output_.wstring() + L"\"");
  }

  const TemporaryFolder folder_;
  const std::filesystem::path output_ = folder_.Path() / "output.txt";
  const std::filesystem::path picture_ = folder_.Path() / "picture.jpg";
};

TEST_F(Script, FindsTheCameraBehindADisk) {
  _putenv_s("ZELCAM_SIM", "78@3");
  EXPECT_EQ(RunScript(), 0);
  _putenv_s("ZELCAM_SIM", "13,13@1");
  std::ifstream output(output_);
  std::string line;
  std::getline(output, line);
  EXPECT_TRUE(line.starts_with("type 78, index 3: ")) << line;
  std::getline(output, line);
  EXPECT_TRUE(line.starts_with("picture: ")) << "to no other type it is a camera: " << line;
}

TEST_F(Script, CapturesAndSavesAPicture) {
  EXPECT_EQ(RunScript(), 0);
  Picture picture;
  std::string error;
  ASSERT_TRUE(ReadPicture(picture_, &picture, &error)) << error;
  ASSERT_EQ(picture.width, 1280);
  ASSERT_EQ(picture.height, 1024);
  const auto number = ReadFrameNumber(picture.rgb.data(), 1280, 1024, 1280 * 3, 3);
  ASSERT_TRUE(number) << "torn, or not the chart";
  EXPECT_GE(*number, 4u);  // the fifth frame or a later one

  const auto chart = MakeTestChart(1280, 1024);
  const auto at = [&](const Spot& spot) {
    return &picture.rgb[static_cast<std::size_t>(spot.y * 1280 + spot.x) * 3];
  };
  const auto* const red = at(Strongest(*chart, &LinearRgb::r));
  EXPECT_GT(red[0], std::max(red[1], red[2]) + 40);
  const auto* const blue = at(Strongest(*chart, &LinearRgb::b));
  EXPECT_GT(blue[2], std::max(blue[0], blue[1]) + 40);
}

}  // namespace
}  // namespace zel::test
