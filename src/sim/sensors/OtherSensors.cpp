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

constexpr RegisterValue kReset61[] = {
    {0x34, 2048 & 0xFF}, {0x35, 2048 >> 8}, {0x36, 1080 & 0xFF}, {0x37, 1080 >> 8}, {0x2A, 100}, {0x67, 32},
};
constexpr SkipRule kSkips61[] = {{0x38, 3, 1, 2}, {0x38, 3, 2, 4}};

template <std::uint32_t kWidth, std::uint32_t kHeight>
constexpr RegisterValue kSocReset[] = {
    {0x14, kWidth >> 8}, {0x15, kWidth & 0xFF}, {0x16, kHeight >> 8}, {0x17, kHeight & 0xFF},
    {0x20, 1000 >> 8},   {0x21, 1000 & 0xFF},   {0x23, 63},
};

/// CMOS sensors with picture processing on the chip, which the mosaic that they send has not gone through.
constexpr SensorMap Soc(int type, int width, int height, std::span<const RegisterValue> reset) {
  return {
      .type = type,
      .family = u"Usb",
      .width = width,
      .height = height,
      .bits = 10,
      .resetValues = reset,
      .left = Word(0x10),
      .top = Word(0x12),
      .columns = Word(0x14),
      .rows = Word(0x16),
      .mirrorX = {{{0x24, 0, 1}}},
      .mirrorY = {{{0x24, 1, 1}}},
      .shutter = Word(0x20),
      .gain = Word(0x22),
      .gainFactor = LinearGain,
      .pixelClock = 30e6,
      .lineBlanking = 320,
      .frameBlanking = 24 * 1920,
  };
}

const SensorMap kSensors[] = {
    Soc(16, 1280, 1024, kSocReset<1280, 1024>),
    Soc(17, 1600, 1200, kSocReset<1600, 1200>),
    // 8-bit registers over a disk's sectors, low byte first.
    {
        .type = 61,
        .family = u"Disk",
        .width = 2048,
        .height = 1080,
        .bits = 10,
        .addressBytes = 2,
        .valueBytes = 1,
        .resetValues = kReset61,
        .left = LowFirst(0x30),
        .top = LowFirst(0x32),
        .columns = LowFirst(0x34),
        .rows = LowFirst(0x36),
        .mirrorX = {{{0x28, 0, 1}}},
        .mirrorY = {{{0x28, 1, 1}}},
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
