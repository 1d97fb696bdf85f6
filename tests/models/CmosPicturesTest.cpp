// What the pictures of every CMOS type show: the scene, the right way round, in its colours, as bright as the
// settings say.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <set>

#include "models/ModelExpectations.h"
#include "models/OpenedCamera.h"
#include "transport/usb/CZELDeviceImplUSB.h"
#include "transport/usb3t2/CZELDeviceImplUSB3T2.h"
#include "transport/wom/CZELDeviceImplWOM.h"

namespace zel {
namespace {

using test::OpenedCamera;

constexpr std::size_t kBlocks = 10;

/// A picture as the mean colours, blue, green and red, of 10 x 10 blocks.
using Blocks = std::array<std::array<std::array<double, 3>, kBlocks>, kBlocks>;

/// The blocks of a third of the sensor, among the chart's colour patches. The outer rows, where the frame
/// code may stand, do not count.
Blocks Take(OpenedCamera& camera, LONG shift = 0) {
  CZELDeviceImpl& device = camera.Device();
  const SensorSize full = ModelOf(device.GetCameraType()).full;
  const LONG side = std::min(full.width, full.height) / 60 * 20;  // even blocks
  camera.Property().SetROI((full.width / 2 & ~1) + shift, (full.height / 5 & ~1) + shift, side, side);
  EXPECT_TRUE(camera.Plays());
  // The first frame that a process reads from a disk-style camera is not shown.
  EXPECT_TRUE(device.GetData(nullptr, 0) == S_OK || device.GetData(nullptr, 0) == S_OK);
  const unsigned char* pixel = device.GetImage()->GetBuffer();
  const auto size = static_cast<std::size_t>(side);
  Blocks blocks{};
  for (std::size_t y = 0; y < size; ++y) {
    for (std::size_t x = 0; x < size; ++x, pixel += 4) {
      auto& block = blocks[y * kBlocks / size][x * kBlocks / size];
      for (std::size_t n = 0; n < 3; ++n) block[n] += pixel[n] * 100.0 / static_cast<double>(size * size);
    }
  }
  device.Stop();
  return blocks;
}

Blocks Flipped(Blocks blocks, bool columns, bool rows) {
  if (rows) std::ranges::reverse(blocks);
  for (auto& row : blocks) {
    if (columns) std::ranges::reverse(row);
  }
  return blocks;
}

/// The greatest difference of a colour.
double Difference(const Blocks& one, const Blocks& other) {
  double most = 0;
  for (std::size_t y = 1; y < kBlocks - 1; ++y) {
    for (std::size_t x = 0; x < kBlocks; ++x) {
      for (std::size_t n = 0; n < 3; ++n) most = std::max(most, std::abs(one[y][x][n] - other[y][x][n]));
    }
  }
  return most;
}

double Brightness(const Blocks& blocks) {
  double sum = 0;
  for (std::size_t y = 1; y < kBlocks - 1; ++y) {
    for (const auto& block : blocks[y]) sum += block[0] + block[1] + block[2];
  }
  return sum / (3 * kBlocks * (kBlocks - 2));
}

void CheckColours(OpenedCamera& camera) {
  CZELDevicePropertyImpl& property = camera.Property();
  const Blocks upright = Take(camera);
  EXPECT_LT(Difference(upright, Take(camera, 1)), 40) << "at an odd pixel";  // other colours are 100 away
  for (const auto& [columns, rows] : {std::pair(true, false), {false, true}, {true, true}}) {
    if (columns && property.Record(kHorMirror).supported == 0) continue;
    if (rows && property.Record(kVerMirror).supported == 0) continue;
    EXPECT_EQ(property.SetHorMirror(columns), property.Record(kHorMirror).supported != 0 ? S_OK : E_NOTIMPL);
    EXPECT_EQ(property.SetVerMirror(rows), S_OK);
    const Blocks mirrored = Take(camera);
    EXPECT_LT(Difference(mirrored, Flipped(upright, columns, rows)), 8) << columns << rows;
    EXPECT_GT(Difference(mirrored, upright), 40) << columns << rows;
  }
}

void CheckBrightness(OpenedCamera& camera) {
  CZELDevicePropertyImpl& property = camera.Property();
  for (const LONG id : {kShutter, kDigitalGlobalGain}) {
    const test::Setter set = id == kShutter ? test::kShutterSetter : test::kGainSetter;
    const PropertyRecord record = property.Record(id);
    const LONG dark = std::max(record.current / 2, record.minimum);
    LONG bright = record.current > dark ? record.current : std::min(2 * dark + 1, record.maximum);
    if (id == kDigitalGlobalGain && record.maximum == 32767) bright = dark + 1024;  // the next exponent
    EXPECT_EQ((property.*set)(dark), S_OK);
    const double before = Brightness(Take(camera));
    EXPECT_EQ((property.*set)(bright), S_OK);
    EXPECT_GT(Brightness(Take(camera)), 1.04 * before) << "record " << id;
  }
}

TEST(CmosPictures, ShowTheSceneInItsColoursAsBrightAsSet) {
  std::set<LONG> types;
  for (const auto& row : test::CmosExpectations()) types.insert(row.type);
  for (const LONG type : types) {
    SCOPED_TRACE(type);
    OpenedCamera camera(type);
    CheckColours(camera);
    CheckBrightness(camera);
    EXPECT_EQ(camera.ProtocolErrors(), std::vector<std::string>());
  }
}

TEST(CmosPictures, FrameArithmetic) {
  const struct {
    LONG type, width, height;
    std::vector<LONG> numbers;
  } rows[] = {
      // USB 2.0: line length, pixel clocks, bytes
      {14, 1280, 1024, {1524, 1561600, 1556480}},
      {24, 308, 100, {553, 56320, 54272}},
      {46, 2048, 1536, {2292, 3521536, 3513344}},
      {9, 640, 480, {734, 356352, 307200}},
      {38, 101, 10, {660, 10240, 1024}},
      {32, 3488, 2616, {3888, 10211328, 9124864}},
      // WOM: bytes in units of 2048, FX3: with 128 spare columns and lines at two bytes in units of 8192
      {59, 1279, 1023, {1308672}},
      {63, 752, 480, {362496}},
      {89, 2560, 1920, {11010048}},
      {96, 640, 480, {933888}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.type);
    OpenedCamera camera(row.type);
    camera.Property().SetROI(0, 0, row.width, row.height);
    EXPECT_TRUE(camera.Plays());
    std::vector<LONG> numbers;
    if (const auto* usb = dynamic_cast<CZELDeviceImplUSB*>(&camera.Device()))
      numbers = {usb->Frame().lineLength, usb->Frame().frameClocks, usb->Frame().expectedBytes};
    if (const auto* wom = dynamic_cast<CZELDeviceImplWOM*>(&camera.Device()))
      numbers = {wom->Frame().expectedBytes};
    if (const auto* fx3 = dynamic_cast<CZELDeviceImplUSB3T2*>(&camera.Device()))
      numbers = {fx3->Frame().frameBytes};
    EXPECT_EQ(numbers, row.numbers);
  }
}

}  // namespace
}  // namespace zel
