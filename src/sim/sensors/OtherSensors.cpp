#include "sim/sensors/SensorMaps.h"

namespace zel {
namespace {

/// A setting of two 8-bit registers, high byte first.
constexpr RegisterField Word(std::uint16_t address) {
  return {{{static_cast<std::uint16_t>(address + 1), 0, 8}, {address, 0, 8, 8}}};
}

constexpr RegisterField LowFirst(std::uint16_t address) {
  return {{{address, 0, 8}, {static_cast<std::uint16_t>(address + 1), 0, 8, 8}}};
}

constexpr RegisterValue kStandby61[] = {{0x00, 1}};
constexpr SkipRule kSkips61[] = {{0x38, 3, 1, 2}, {0x38, 3, 2, 4}};

/// CMOS sensors with picture processing on the chip, which the mosaic that they send has not gone through.
constexpr SensorMap Soc(int type, int width, int height) {
  return {
      .type = type,
      .family = u"Usb",
      .width = width,
      .height = height,
      .bits = 10,
      .reset = ResetExposure{1000, 63},
      .left = Word(0x10),
      .top = Word(0x12),
      .columns = Word(0x14),
      .rows = Word(0x16),
      .mirrorX = Bit(0x24, 0),
      .mirrorY = Bit(0x24, 1),
      .shutter = Word(0x20),
      .gain = Word(0x22),
      .gainFactor = LinearGain,
      .pixelClock = 30e6,
      .lineBlanking = 320,
      .frameBlanking = 24 * 1920,
  };
}

const SensorMap kSensors[] = {
    Soc(16, 1280, 1024),
    Soc(17, 1600, 1200),
    // 8-bit registers over a disk's sectors, low byte first.
    {
        .type = 61,
        .family = u"Disk",
        .width = 2048,
        .height = 1080,
        .bits = 10,
        .addressBytes = 2,
        .valueBytes = 1,
        .reset = ResetExposure{100, 32},
        .resetValues = kStandby61,
        .left = LowFirst(0x30),
        .top = LowFirst(0x32),
        .columns = LowFirst(0x34),
        .rows = LowFirst(0x36),
        .mirrorX = Bit(0x28, 0),
        .mirrorY = Bit(0x28, 1),
        .stream = Bit(0x01, 0),
        .standby = Bit(0x00, 0),
        .skips = kSkips61,
        .shutter = {{{0x2A, 0, 8}, {0x2B, 0, 8, 8}, {0x2C, 0, 8, 16}}},
        .gain = {{{0x67, 0, 6}}},
        .gainFactor = LinearGain,
        .pixelClock = 72e6,
        .lineBlanking = 128,
        .frameBlanking = 20 * 2176,
        .modelCode = 0x0680,
    },
};

}  // namespace

std::span<const SensorMap> OtherSensors() {
  return kSensors;
}

}  // namespace zel
