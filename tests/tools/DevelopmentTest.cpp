#include "tools/support/Development.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "tools/support/ToolError.h"

namespace zel::tool {
namespace {

DevelopRequest Request(LONG width, LONG height) {
  DevelopRequest request;
  request.width = width;
  request.height = height;
  request.settings.resize(DevelopSettings().size());
  return request;
}

TEST(Development, FrameSizes) {
  struct Row {
    LONG inputFormat, bits;
    std::optional<LONG> sourceWidth;
    const char* text;
    std::uint64_t bytes;
  };
  const Row rows[] = {
      {0, 8, {}, "1280 x 1024 8-bit mosaic", 1310720},   {0, 16, {}, "1280 x 1024 16-bit mosaic", 2621440},
      {0, 8, 1524, "1524 x 1024 8-bit mosaic", 1560576}, {4, 8, {}, "1280 x 1024 packed colour", 3932160},
      {6, 8, {}, "1280 x 1024 YUV 4:2:2", 2621440},      {0, 8, 65535, "65535 x 1024 8-bit mosaic", 67107840},
  };
  for (const Row& row : rows) {
    DevelopRequest request = Request(1280, 1024);
    request.inputFormat = row.inputFormat;
    request.bits = row.bits;
    request.sourceWidth = row.sourceWidth;
    EXPECT_EQ(request.FrameText(), row.text);
    EXPECT_EQ(request.FrameBytes(), row.bytes);
  }
}

TEST(Development, PackedColourKeepsItsRows) {
  DevelopRequest request = Request(2, 2);
  request.inputFormat = 4;
  request.outputFormat = 4;
  request.sourceWidth = 3;
  std::vector<std::uint8_t> frame(request.FrameBytes());
  for (std::size_t n = 0; n < frame.size(); ++n) frame[n] = static_cast<std::uint8_t>(n);
  const auto image = Develop(request, frame);
  const std::vector<std::uint8_t> pixels(image->GetBuffer(), image->GetBuffer() + 12);
  EXPECT_EQ(pixels, (std::vector<std::uint8_t>{0, 1, 2, 3, 4, 5, 9, 10, 11, 12, 13, 14}));
}

/// A frame on which every setting can act: a gradient, single bright pixels, colour.
std::vector<std::uint8_t> TestFrame(LONG width, LONG height) {
  std::vector<std::uint8_t> frame;
  for (LONG y = 0; y < height; ++y) {
    for (LONG x = 0; x < width; ++x) {
      const int colour = (y % 2) * 20 + (x % 2) * 45;
      frame.push_back(static_cast<std::uint8_t>(x % 9 == 4 && y % 7 == 3 ? 250 : 40 + colour + 2 * x + y));
    }
  }
  return frame;
}

std::string Pixels(const DevelopRequest& request) {
  std::vector<std::uint8_t> frame = TestFrame(request.width, request.height);
  const auto image = Develop(request, frame);
  const auto bytes = std::size_t(image->GetStride()) * std::size_t(image->GetHeight());
  return {reinterpret_cast<const char*>(image->GetBuffer()), bytes};
}

TEST(Development, EverySettingReachesThePictureInItsOwnWay) {
  const DevelopRequest plain = Request(36, 28);
  std::set<std::string> pictures{Pixels(plain)};
  for (std::size_t n = 0; n < DevelopSettings().size(); ++n) {
    const DevelopSetting& setting = DevelopSettings()[n];
    const std::string name = setting.option;
    DevelopRequest request = plain;
    request.settings[n] = name.starts_with("--gain") || name == "--gamma" ? 60 : 1;
    if (name == "--hue") request.settings[n] = 90;
    if (name == "--contrast" || name == "--brightness" || name == "--sharpness") request.settings[n] = 30;
    if (name == "--colorful") request.settings[n] = 0;
    // These two act together with something else: below.
    if (name == "--color-correction" || name == "--dot-threshold") continue;
    EXPECT_TRUE(pictures.insert(Pixels(request)).second)
        << name << " changes nothing, or what another one does";
  }
  DevelopRequest white = plain;
  white.whitePixel = 1;
  white.whiteThreshold = 20;
  EXPECT_TRUE(pictures.insert(Pixels(white)).second);
  DevelopRequest complementary = plain;
  complementary.complementary = true;
  EXPECT_TRUE(pictures.insert(Pixels(complementary)).second);
}

TEST(Development, MatrixIsReadRowByRowAndCanBeSwitchedOff) {
  // Red goes to blue: row 0 (from red), column 2 (to blue).
  DevelopRequest request = Request(36, 28);
  const std::string plain = Pixels(request);
  request.colorMatrix = {0, 0, 1, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
  const std::string turned = Pixels(request);
  const std::size_t middle = (14 * 36 + 18) * 4;
  EXPECT_EQ(turned[middle], plain[middle + 2]);
  EXPECT_EQ(turned[middle + 2], 0);

  const auto correction =
      std::ranges::find(DevelopSettings(), std::string_view("--color-correction"),
                        [](const DevelopSetting& setting) { return std::string_view(setting.option); });
  request.settings[static_cast<std::size_t>(correction - DevelopSettings().begin())] = 0;
  EXPECT_EQ(Pixels(request), plain);
}

TEST(Development, ClassesAndFormats) {
  struct Row {
    std::optional<LONG> outputFormat, imageClass;
    LONG stride;
  };
  const Row rows[] = {{{}, {}, 144}, {{}, 24, 108}, {4, {}, 108}, {1, {}, 144}, {0, {}, 36}, {5, 32, 144}};
  for (const Row& row : rows) {
    DevelopRequest request = Request(36, 28);
    request.outputFormat = row.outputFormat;
    request.imageClass = row.imageClass;
    std::vector<std::uint8_t> frame = TestFrame(36, 28);
    EXPECT_EQ(Develop(request, frame)->GetStride(), row.stride);
  }
}

TEST(Development, RefusesWhatConvertsNothing) {
  struct Row {
    LONG width, height, inputFormat, bits;
    std::optional<LONG> outputFormat, imageClass;
    bool complementary;
    const char* error;
  };
  const Row rows[] = {
      {36, 28, 0, 8, 5, 24, false,
       "36 x 28 8-bit mosaic frame does not become output format 5 in the 24-bit class"},
      {36, 28, 0, 8, 4, 32, false,
       "36 x 28 8-bit mosaic frame does not become output format 4 in the 32-bit class"},
      {36, 28, 6, 8, 4, {}, false, "36 x 28 YUV 4:2:2 frame does not become output format 4"},
      {36, 28, 6, 8, 0, {}, false, "36 x 28 YUV 4:2:2 frame does not become output format 0"},
      {36, 28, 4, 8, 1, {}, false, "36 x 28 packed colour frame does not become output format 1"},
      {36,
       28,
       0,
       8,
       0,
       {},
       true,
       "36 x 28 8-bit mosaic of complementary colours does not become output format 0"},
      {36, 28, 0, 16, {}, {}, true, "a mosaic of complementary colours has 8-bit samples"},
      {36, 28, 6, 16, {}, {}, false, "only mosaic frames have 16-bit samples"},
      {37, 28, 0, 8, {}, {}, false, "a picture of 37 x 28 is larger than its frame, 36 x 28 8-bit mosaic"},
      {36, 29, 0, 8, 0, {}, false, "a picture of 36 x 29 is larger than its frame, 36 x 28 8-bit mosaic"},
  };
  for (const Row& row : rows) {
    DevelopRequest request = Request(row.width, row.height);
    request.sourceWidth = 36;
    request.sourceHeight = 28;
    request.inputFormat = row.inputFormat;
    request.bits = row.bits;
    request.outputFormat = row.outputFormat;
    request.imageClass = row.imageClass;
    request.complementary = row.complementary;
    std::vector<std::uint8_t> frame(request.FrameBytes());
    try {
      Develop(request, frame);
      ADD_FAILURE() << row.error;
    } catch (const ToolError& error) {
      EXPECT_STREQ(error.what(), row.error);
      if (row.inputFormat == 6 && row.bits == 8) {
        EXPECT_EQ(error.Hint(), "--output-format can be 1, 5; --method 1 and 2 need 5 x 5 pixels");
      }
    }
  }
}

TEST(Development, OffersWhatCamerasAccept) {
  const std::map<std::string_view, std::pair<LONG, LONG>> expected = {
      {"--gain-r", {0, 300}}, {"--saturation", {-10, 10}},   {"--brightness", {-255, 255}},
      {"--hue", {0, 359}},    {"--dot-threshold", {1, 255}}, {"--method", {0, 2}}};
  for (const DevelopSetting& setting : DevelopSettings()) {
    const auto [minimum, maximum] = LimitsOf(setting);
    EXPECT_LT(minimum, maximum) << setting.option;
    const auto known = expected.find(setting.option);
    if (known == expected.end()) continue;
    EXPECT_EQ(std::pair(minimum, maximum), known->second) << setting.option;
  }
}

}  // namespace
}  // namespace zel::tool
