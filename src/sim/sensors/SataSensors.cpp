#include "sim/sensors/SensorMaps.h"

namespace zel {
namespace {

constexpr RegisterValue kReset[] = {
    {0x01, 20}, {0x02, 32}, {0x03, 1535}, {0x04, 2047}, {0x09, 300}, {0x35, 60},
};

const SensorMap kSensors[] = {
    // 2048 x 1536, 10 bits, 16-bit registers. Sub-sampling (0x22, 0x23) is stored without effect.
    {
        .type = 1,
        .family = u"Sata",
        .width = 2048,
        .height = 1536,
        .bits = 10,
        .filter = ColourFilter::Grbg,
        .addressBytes = 1,
        .valueBytes = 2,
        .resetValues = kReset,
        .left = {{{0x02, 0, 12}}},
        .top = {{{0x01, 0, 11}}},
        .leftOffset = 32,
        .topOffset = 20,
        .columns = {{{0x04, 0, 11}}},
        .rows = {{{0x03, 0, 11}}},
        .columnsBias = 1,
        .rowsBias = 1,
        .mirrorX = {{{0x20, 14, 1}}},
        .mirrorY = {{{0x20, 15, 1}}},
        .trigger = {{{0x1E, 8, 1}}},
        .shutter = {{{0x09, 0, 16}}},
        .gain = {{{0x35, 0, 8}}},
        .gainFactor = LinearGain,
        .pixelClock = 48e6,
        .lineBlanking = 520,
        .shortestLine = 900,
        .frameBlanking = 3 * 2568,
        .volume = {.command = 0x100, .areaA = 0x1000, .areaB = 0x5000},
    },
};

}  // namespace

std::span<const SensorMap> SataSensors() {
  return kSensors;
}

}  // namespace zel
