#include "sim/Sensor.h"

#include <gtest/gtest.h>

#include "sim/sensors/SensorMaps.h"

namespace zel {
namespace {

/// A sensor fresh from its reset shows all of itself, at the exposure that its scene is made for, at a rate
/// that a user would expect.
TEST(Sensor, ResetSelectsTheWholePicture) {
  for (const auto& maps : {Map16Sensors(), Map3040Sensors(), WideVgaSensors(), ByteSensors()}) {
    for (const SensorMap& map : maps) {
      SCOPED_TRACE(map.type);
      EXPECT_EQ(FindSensorMap(map.type), &map);
      const Readout readout = Sensor(map).Decode(1);
      EXPECT_EQ(readout.window, (ReadoutWindow{.columns = map.width, .rows = map.height}));
      EXPECT_EQ(readout.exposure, 1);
      EXPECT_EQ(readout.gain, 1);
      EXPECT_FALSE(readout.triggered);
      EXPECT_GT(readout.frameSeconds, 1.0 / 61);
      EXPECT_LT(readout.frameSeconds, 1.0 / 5);
    }
  }
}

TEST(Sensor, RegistersMeanTheirSettings) {
  const struct {
    int type;
    std::vector<RegisterValue> writes;
    double exposure, gain;
  } rows[] = {
      {28, {{0x09, 0}, {0x08, 1}}, 655.36, 1},           // bit 16 of the lines
      {32, {{0x305E, 0x1000 | 14}}, 2, 2},               // exponent
      {32, {{0x0200, 1}, {0x0202, 0x2345}}, 745.65, 1},  // 74565 lines for 100
      {68, {{0x08, 0x32}, {0x09, 0x08}}, 2, 1},          // bytes
      {96, {{0x14, 94}}, 1.995262, 1.995262},            // 6 dB
      {97, {{0x36, 3}, {0x35, 7}}, 4, 0.5},              // steps of the exposure
      {15, {{0x2F, 64}, {0x09, 616}}, 1, 2},             // gain of 11 bits
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.type);
    Sensor sensor(*FindSensorMap(row.type));
    for (const auto& [address, value] : row.writes) sensor.Write(address, value);
    EXPECT_NEAR(sensor.Decode(1).exposure, row.exposure, 1e-5);
    EXPECT_NEAR(sensor.Decode(1).gain, row.gain, 1e-5);
    sensor.Reset();
    EXPECT_EQ(sensor.Decode(1).exposure, 1);
  }
}

}  // namespace
}  // namespace zel
