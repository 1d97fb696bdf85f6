// What a simulated camera sees: scenes, window, mirrors, mosaic, exposure, noise.
#include <gmock/gmock.h>

#include <cmath>
#include <numeric>
#include <random>

#include "UsbClient.h"
#include "imaging/PictureReader.h"
#include "sim/FrameCode.h"
#include "sim/TestChart.h"
#include "sim/UsbWire.h"

namespace zel {
namespace {

using testing::Gt;
using testing::Lt;

constexpr int kWidth = 1280, kHeight = 1024;

/// One flat colour, or grey pixels that differ from each other at random.
class FieldScene : public Scene {
 public:
  explicit FieldScene(std::optional<LinearRgb> colour) : Scene(kWidth, kHeight), colour_(colour) {}

  void RenderRow(int y, LinearRgb* row) const override {
    std::minstd_rand random(static_cast<unsigned>(y + 1));
    for (int x = 0; x < kWidth; ++x) {
      const auto grey = static_cast<std::uint16_t>(random());
      row[x] = colour_.value_or(LinearRgb{grey, grey, grey});
    }
  }

 private:
  std::optional<LinearRgb> colour_;
};

std::unique_ptr<SimDriverHost> HostBefore(std::optional<LinearRgb> colour, double noise = 0) {
  SimConfiguration configuration = FastCamera();
  configuration.noise = noise;
  return std::make_unique<SimDriverHost>(std::vector<std::shared_ptr<SimDevice>>{std::make_shared<UsbWire>(
      SimCameraAddress{13, 0}, *FindSensorMap(13), std::make_shared<FieldScene>(colour), configuration)});
}

double Mean(const std::vector<std::uint16_t>& samples) {
  return std::accumulate(samples.begin(), samples.end(), 0.0) / static_cast<double>(samples.size());
}

double Deviation(const std::vector<std::uint16_t>& samples) {
  const double mean = Mean(samples);
  double sum = 0;
  for (const auto sample : samples) sum += std::pow(sample - mean, 2);
  return std::sqrt(sum / static_cast<double>(samples.size()));
}

TEST(Window, ShowsThePixelsItNames) {
  struct Case {
    const char* what;
    int x, y, columns, rows;
    std::uint16_t r1E, r20;
    std::vector<int> showsColumns, showsRows;
  };
  const Case cases[] = {
      {"corner", 0, 0, 4, 3, 0, 0, {0, 1, 2, 3}, {0, 1, 2}},
      {"odd start", 7, 5, 4, 3, 0, 0, {7, 8, 9, 10}, {5, 6, 7}},
      {"horizontal mirror", 8, 4, 4, 2, 0, 0x4000, {11, 10, 9, 8}, {4, 5}},
      {"vertical mirror", 8, 4, 2, 3, 0, 0x8000, {8, 9}, {6, 5, 4}},
      {"both, odd size", 8, 4, 3, 3, 0, 0xC000, {10, 9, 8}, {6, 5, 4}},
      {"half", 0, 0, 6, 4, 0, 0x18, {0, 1, 4, 5, 8, 9}, {0, 1, 4, 5}},
      {"quarter", 4, 2, 4, 4, 0x0C, 0, {4, 5, 12, 13}, {2, 3, 10, 11}},
      {"eighth", 0, 0, 4, 2, 0x30, 0, {0, 1, 16, 17}, {0, 1}},
      {"half mirrored", 0, 0, 4, 2, 0, 0x4018, {7, 6, 3, 2}, {0, 1}},
      {"beyond the edge", 1278, 1022, 4, 4, 0, 0, {1278, 1279, 1279, 1279}, {1022, 1023, 1023, 1023}},
      {"before the edge", -2, -1, 4, 3, 0, 0, {0, 0, 0, 1}, {0, 0, 1}},
  };
  const auto host = HostBefore({});
  UsbClient client(*host);
  const std::vector<std::uint16_t> whole = client.ReadSamples(kWidth, kHeight);
  ASSERT_THAT(Deviation(whole), Gt(100));  // pixels differ
  for (const Case& c : cases) {
    client.SetWindow(c.x, c.y, c.columns, c.rows);
    client.WriteRegister(0x1E, c.r1E);
    client.WriteRegister(0x20, c.r20);
    std::vector<std::uint16_t> expected;
    for (const int row : c.showsRows)
      for (const int column : c.showsColumns)
        expected.push_back(whole.at(static_cast<unsigned>(row * kWidth + column)));
    EXPECT_EQ(client.ReadSamples(c.columns, c.rows), expected) << c.what;
  }
}

TEST(Mosaic, TurnsWithStartAndMirrors) {
  struct Case {
    int x, y;
    std::uint16_t mirrors;
    const char* colours;  // of the 2 x 2 picture
  };
  const Case cases[] = {{0, 0, 0, "GRBG"},      {1, 0, 0, "RGGB"},      {0, 1, 0, "BGGR"},
                        {1, 1, 0, "GBRG"},      {0, 0, 0x4000, "RGGB"}, {0, 0, 0x8000, "BGGR"},
                        {0, 0, 0xC000, "GBRG"}, {640, 512, 0, "GRBG"}};
  const auto host = HostBefore(LinearRgb{60000, 40000, 20000});
  UsbClient client(*host);
  for (const Case& c : cases) {
    client.SetWindow(c.x, c.y, 2, 2);
    client.WriteRegister(0x20, c.mirrors);
    std::string colours;
    for (const auto sample : client.ReadSamples(2, 2))
      colours += sample > 700 ? 'R' : sample > 450 ? 'G' : 'B';
    EXPECT_EQ(colours, c.colours) << c.x << " " << c.y << " " << c.mirrors;
  }
}

TEST(Exposure, FollowsShutterAndGainUpToFullScale) {
  struct Case {
    std::uint16_t shutter, gain;
    double level;  // of a tenth of white: 0.1 x 0.86 x 1023 at the reset values
  };
  const Case cases[] = {{1049, 14, 87.5},  {2098, 14, 175.5},
                        {1049, 28, 175.5}, {4196, 28, 703},
                        {8392, 28, 1023},  {16383, 127, 1023},
                        {1049, 7, 43.5},   {0, 14, 0},
                        {1049, 0, 0},      {1049 + 0x4000, 14 + 0x80, 87.5}};
  const auto host = HostBefore(LinearRgb{6553, 6553, 6553}, 1);
  UsbClient client(*host);
  client.SetWindow(0, 0, 128, 128);
  for (const Case& c : cases) {
    client.WriteRegister(0x09, c.shutter);
    client.WriteRegister(0x35, c.gain);
    EXPECT_NEAR(Mean(client.ReadSamples(128, 128)), c.level, 1 + c.level / 100) << c.shutter << " " << c.gain;
  }
}

TEST(Exposure, NoiseIsSmallGrowsWithLightAndRepeatsWithItsSeed) {
  const LinearRgb dark{700, 700, 700}, bright{50000, 50000, 50000};
  const auto host = HostBefore(bright, 1), same = HostBefore(bright, 1), other = HostBefore(dark, 1);
  const auto first = UsbClient(*host).ReadSamples(kWidth, kHeight);
  EXPECT_THAT(Deviation(first), testing::AllOf(Gt(3), Lt(8)));
  EXPECT_THAT(Deviation(UsbClient(*other).ReadSamples(kWidth, kHeight)), Lt(2));
  EXPECT_EQ(UsbClient(*same).ReadSamples(kWidth, kHeight), first);
  EXPECT_NE(UsbClient(*host).ReadSamples(kWidth, kHeight), first) << "every frame has its own noise";
}

TEST(Timing, FollowsWindowShutterAndClock) {
  struct Case {
    std::uint32_t shutter, columns, rows;
    int divider;
    double clocks;
  };
  const Case cases[] = {{1049, 1280, 1024, 1, 1049.0 * 1524},  // the exposure is the longer part
                        {100, 1280, 1024, 1, 1524.0 * 1024 + 241},
                        {100, 308, 1024, 1, 553.0 * 1024 + 241},  // shortest line
                        {100, 310, 100, 2, 2 * (554.0 * 100 + 241)}};
  for (const Case& c : cases) {
    Sensor sensor(*FindSensorMap(13));
    sensor.Write(0x09, c.shutter);
    sensor.Write(0x04, c.columns - 1);
    sensor.Write(0x03, c.rows - 1);
    EXPECT_DOUBLE_EQ(sensor.Decode(c.divider).frameSeconds, c.clocks / 48e6);
  }
}

TEST(Chart, IsWellExposedAndCarriesItsNumberInEverySetting) {
  struct Case {
    int columns, rows;
    std::uint16_t r1E, r20;
  };
  const Case cases[] = {{kWidth, kHeight, 0, 0},
                        {kWidth, kHeight, 0, 0xC000},
                        {640, 512, 0, 0x18},
                        {320, 256, 0x0C, 0x8000},
                        {200, 100, 0, 0x4000}};
  const auto host = MakeHost(FastCamera());
  UsbClient client(*host);
  for (const Case& c : cases) {
    client.SetWindow(0, 0, c.columns, c.rows);
    client.WriteRegister(0x1E, c.r1E);
    client.WriteRegister(0x20, c.r20);
    const auto size = static_cast<std::uint32_t>(c.columns * c.rows);
    client.SetTransfer(size, 1);
    Bytes frame(size);
    for (std::uint32_t number = 1; number < 3; ++number) {
      ASSERT_TRUE(client.ReadFrame(frame).ok);
      EXPECT_EQ(ReadFrameNumber(frame.data(), c.columns, c.rows, c.columns, 1), number) << c.columns;
    }
    if (c.columns != kWidth) continue;
    const auto white = frame.end() - kWidth * kHeight / 20;
    std::ranges::nth_element(frame, white);
    EXPECT_NEAR(*white, 220, 6);
  }
}

TEST(PhotoScene, CoversTheSensorWithItsCodes) {
  // Black, red, white, black beside one another: a target half as wide shows the middle.
  const Picture picture{
      4, 2, {0, 0, 0, 255, 0, 0, 255, 255, 255, 0, 0, 0, 0, 0, 0, 255, 0, 0, 255, 255, 255, 0, 0, 0}};
  LinearRgb row[2];
  MakePhotoScene(picture, 2, 2)->RenderRow(1, row);
  EXPECT_EQ(row[0], (LinearRgb{65535, 0, 0}));
  EXPECT_EQ(row[1], (LinearRgb{65535, 65535, 65535}));
  MakePhotoScene(Picture{2, 1, {0, 0, 0, 255, 255, 255}}, 2, 2)->RenderRow(0, row);
  EXPECT_NEAR(row[0].g, 65535 / 4.0, 8) << "enlarged, a quarter of the way to white";
}

TEST(Lens, SoftensTheChartInBothDirections) {
  constexpr int kColumns = 64, kRows = 40, kWeights[] = {1, 4, 6, 4, 1};
  const auto chart = MakeTestChart(kColumns, kRows);
  std::vector<LinearRgb> sharp(kColumns * kRows);
  for (int y = 0; y < kRows; ++y) chart->RenderRow(y, &sharp[static_cast<std::size_t>(y * kColumns)]);
  const auto seen = FilteredScene(*chart, ColourFilter::Mono, 0);
  for (int i = 0; i < kColumns * kRows; ++i) {
    double sum = 0;
    for (int n = 0; n < 25; ++n) {
      const int y = std::clamp(i / kColumns + n / 5 - 2, 0, kRows - 1);
      const int x = std::clamp(i % kColumns + n % 5 - 2, 0, kColumns - 1);
      const LinearRgb& light = sharp[static_cast<std::size_t>(y * kColumns + x)];
      sum += kWeights[n / 5] * kWeights[n % 5] * (light.r + 2.0 * light.g + light.b) / 4;
    }
    ASSERT_NEAR(seen[static_cast<std::size_t>(i)], sum / 256, 2) << i;
  }
}

TEST(Blur, SpreadsWithoutChangingTheMean) {
  const auto chart = MakeTestChart(320, 256);
  for (const ColourFilter filter : {ColourFilter::Mono, ColourFilter::Rggb}) {
    const auto sharp = FilteredScene(*chart, filter, 0);
    double last = Deviation(sharp);
    for (const double radius : {0.5, 1.0, 2.5, 6.0, 15.0}) {
      const auto blurred = FilteredScene(*chart, filter, radius);
      EXPECT_NEAR(Mean(blurred), Mean(sharp), 65535 * 0.005);
      EXPECT_THAT(Deviation(blurred), Lt(last));
      last = Deviation(blurred);
    }
  }
}

}  // namespace
}  // namespace zel
