#include <cmath>

#include "sim/sensors/SensorMaps.h"

namespace zel {
namespace {

/// A value in two registers of 8 bits, low byte first.
constexpr RegisterField BytePair(std::uint16_t address) {
  return {{{address, 0, 8, 0}, {static_cast<std::uint16_t>(address + 1), 0, 8, 8}}};
}

constexpr SkipRule kSkips68[] = {{0x18, 3, 2, 4}, {0x18, 3, 1, 2}};
constexpr SkipRule kSkips96[] = {{0x06, 3, 3, 8}, {0x06, 3, 2, 4}, {0x06, 3, 1, 2}};
constexpr SkipRule kSkips97[] = {{0x3814, 3, 3, 8}, {0x3814, 3, 2, 4}, {0x3814, 3, 1, 2}};

/// In tenths of a decibel.
double DecibelGain(std::uint32_t code) {
  return std::pow(10.0, code / 200.0);
}

/// The exposure goes in steps of a factor of two.
double LinesOfStep(std::uint32_t step) {
  return 90 << step;
}

const SensorMap kSensors[] = {
    // 1328 x 1048, 10 bits, registers of 8 bits.
    {
        .type = 68,
        .family = u"Wom",
        .width = 1328,
        .height = 1048,
        .bits = 10,
        .addressBytes = 1,
        .valueBytes = 1,
        .reset = ResetExposure{1049, 104},
        .left = BytePair(0x10),
        .top = BytePair(0x12),
        .columns = BytePair(0x14),
        .rows = BytePair(0x16),
        .mirrorX = Bit(0x01, 1),
        .mirrorY = Bit(0x01, 0),
        .trigger = Bit(0x1E, 7),
        .skips = kSkips68,
        .shutter = BytePair(0x08),
        .gain = {{{0x1C, 0, 8, 0}, {0x1D, 0, 5, 8}}},
        .gainFactor = LinearGain,
        .pixelClock = 48e6,
        .lineBlanking = 240,
        .frameBlanking = 34 * 1568,
    },
    // 1280 x 960, 10 bits, bytes in registers of 16 bits.
    {
        .type = 96,
        .family = u"Fx",
        .width = 1280,
        .height = 960,
        .bits = 10,
        .addressBytes = 2,
        .valueBytes = 2,
        .reset = ResetExposure{511, 34},
        .left = BytePair(0x3E),
        .top = BytePair(0x3A),
        .columns = BytePair(0x40),
        .rows = BytePair(0x3C),
        .mirrorX = Bit(0x07, 1),
        .mirrorY = Bit(0x07, 0),
        .halfClock = Bit(0x0B, 0),
        .skips = kSkips96,
        .shutter = {{{0x20, 0, 8, 0}, {0x21, 0, 8, 8}, {0x22, 0, 8, 16}}},
        .gain = {{{0x14, 0, 8, 0}, {0x15, 0, 2, 8}}},
        .gainFactor = DecibelGain,
        .pixelClock = 54e6,
        .lineBlanking = 520,
        .frameBlanking = 20 * 1800,
    },
    // 1280 x 720, 10 bits, the exposure in four steps.
    {
        .type = 97,
        .family = u"Fx",
        .width = 1280,
        .height = 720,
        .bits = 10,
        .addressBytes = 2,
        .valueBytes = 2,
        .reset = ResetExposure{0, 14},
        .left = {{{0x3800, 0, 12}}},
        .top = {{{0x3802, 0, 12}}},
        .columns = {{{0x3808, 0, 12}}},
        .rows = {{{0x380A, 0, 12}}},
        .mirrorX = Bit(0x3821, 1),
        .mirrorY = Bit(0x3820, 1),
        .halfClock = Bit(0x3036, 0),
        .skips = kSkips97,
        .shutter = {{{0x36, 0, 2}}},
        .shutterLines = LinesOfStep,
        .gain = {{{0x35, 0, 6}}},
        .gainFactor = LinearGain,
        .whiteLevel = 0.6,
        .pixelClock = 48e6,
        .lineBlanking = 400,
        .frameBlanking = 30 * 1680,
    },
};

}  // namespace

std::span<const SensorMap> ByteSensors() {
  return kSensors;
}

}  // namespace zel
