// A photo in front of a simulated camera comes back with default settings, through the whole library.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <random>

#include "imaging/ImageFile.h"
#include "platform/Text.h"
#include "sim/SimDriverHost.h"
#include "tools/support/Capture.h"

namespace zel::tool {
namespace {

struct Rgb {
  int r, g, b;
};
// Skin, sky, foliage, earth, and what lies at the edges of what a screen shows.
constexpr Rgb kPatches[] = {{236, 188, 160}, {198, 134, 102}, {110, 165, 235}, {60, 95, 40},
                            {86, 112, 70},   {120, 78, 60},   {255, 255, 255}, {192, 192, 192},
                            {128, 128, 128}, {64, 64, 64},    {16, 16, 16},    {255, 0, 0},
                            {0, 255, 0},     {0, 0, 255},     {255, 255, 0},   {0, 255, 255},
                            {255, 0, 255},   {240, 120, 20},  {30, 10, 60},    {200, 255, 220}};
constexpr int kColumns = 5, kRows = 4, kPatch = 80;  // pixels
constexpr int kWidth = kColumns * kPatch, kHeight = kRows * kPatch;

std::filesystem::path WritePhoto() {
  std::vector<std::uint8_t> pixels;
  for (int i = 0; i < kWidth * kHeight; ++i) {
    const auto& [r, g, b] = kPatches[i / kWidth / kPatch * kColumns + i % kWidth / kPatch];
    for (const int value : {b, g, r}) pixels.push_back(static_cast<std::uint8_t>(value));
  }
  const auto path = std::filesystem::temp_directory_path() /
                    ("zelcam-photo-" + std::to_string(std::random_device{}()) + ".bmp");
  const std::u16string name = ToUtf16(ToText(path));
  EXPECT_TRUE(SavePicture(reinterpret_cast<const OLECHAR*>(name.c_str()), pixels.data(), kWidth, kHeight, 24,
                          kWidth * 3, 0, 0));
  return path;
}

/// One picture with default settings; of the chart without a scene.
CapturedFrame Snap(CameraId id, const std::filesystem::path& scene) {
  SimConfiguration configuration;
  configuration.cameras = {{id.type, id.index}};
  configuration.framesPerSecond = 0;
  configuration.scene = ToText(scene);
  std::string error;
  const auto host = SimDriverHost::Create(configuration, &error);
  EXPECT_NE(host, nullptr) << error;
  const ScopedDriverHost scope(*host);
  Camera camera(id);
  camera.Open();
  const auto capture = StartCapture(camera, kDeliverOnDemand, Keep::Pixels);
  CapturedFrame frame;
  bool came = false;
  for (int tries = 0; tries < 10000 && !came; ++tries) came = capture->Next(&frame, 100);
  EXPECT_TRUE(came);
  return frame;
}

TEST(Photo, ComesBackWithDefaultSettings) {
  const std::filesystem::path photo = WritePhoto();
  for (const CameraId id :
       {CameraId{13, 0}, CameraId{67, 0}, CameraId{96, 0}, CameraId{55, 0}, CameraId{1, 'E'}}) {
    const CapturedFrame frame = Snap(id, photo);
    // The photo covers the sensor and is cut at two sides.
    const double scale = std::min(double(kWidth) / frame.width, double(kHeight) / frame.height);
    double sum = 0, worst = 0;
    for (int n = 0; n < kColumns * kRows; ++n) {
      const double x = frame.width / 2.0 + ((n % kColumns + 0.5) * kPatch - kWidth / 2.0) / scale;
      const double y = frame.height / 2.0 + ((n / kColumns + 0.5) * kPatch - kHeight / 2.0) / scale;
      constexpr int kAround = 8;
      double mean[3] = {};
      for (int dy = -kAround; dy < kAround; ++dy) {
        for (int dx = -kAround; dx < kAround; ++dx) {
          const auto at = static_cast<std::size_t>((int(y) + dy) * frame.strideBytes + (int(x) + dx) * 4);
          for (std::size_t c = 0; c < 3; ++c) mean[c] += frame.pixels.at(at + c) / (4.0 * kAround * kAround);
        }
      }
      const auto& [r, g, b] = kPatches[n];
      const double errors[3] = {mean[0] - b, mean[1] - g, mean[2] - r};
      for (const double channel : errors) {
        sum += std::abs(channel);
        worst = std::max(worst, std::abs(channel));
      }
    }
    EXPECT_LE(sum / (3 * kColumns * kRows), 1.5) << ToText(id) << ": mean error of a channel, in 255ths";
    EXPECT_LE(worst, 4) << ToText(id);
  }
  std::filesystem::remove(photo);
}

TEST(Chart, GreyBarsStayGrey) {
  const CapturedFrame frame = Snap({13, 0}, {});
  double sum = 0;
  int count = 0;
  for (int y = 735; y < 890; ++y) {  // the gratings of 2 to 5 pixels
    for (int x = 500; x < 864; ++x, ++count) {
      const std::uint8_t* p = &frame.pixels[static_cast<std::size_t>(y * frame.strideBytes + x * 4)];
      sum += std::max(std::abs(p[2] - p[1]), std::abs(p[0] - p[1]));
    }
  }
  EXPECT_LT(sum / count, 12) << "hard edges make 30 of 255";
}

}  // namespace
}  // namespace zel::tool
