#include <cmath>

#include "sim/sensors/SensorMaps.h"

namespace zel {
namespace {

constexpr RegisterValue kReset[] = {
    {0x05, 100}, {0x2004, 2}, {0x2014, 4896}, {0x2016, 3264}, {0x3001, 1},
};

/// The front end's amplifier: 36 dB over its 10 bits.
double FrontEndGain(std::uint32_t code) {
  return std::pow(10.0, code * (36.0 / 20 / 1023));
}

const SensorMap kSensors[] = {
    // 4896 x 3264 CCD, 10 bits, 16-bit registers. The light is that of a flash: two lines suffice.
    {
        .type = 78,
        .family = u"Disk",
        .width = 4896,
        .height = 3264,
        .bits = 10,
        .filter = ColourFilter::Grbg,
        .addressBytes = 2,
        .valueBytes = 2,
        .resetValues = kReset,
        .left = {{{0x2010, 0, 13}}},
        .top = {{{0x2012, 0, 13}}},
        .columns = {{{0x2014, 0, 13}}},
        .rows = {{{0x2016, 0, 13}}},
        .binX = {{{0x2018, 1, 1}}},
        .binY = {{{0x2018, 0, 1}}},
        .fieldReadout = RegisterMatch{0x3001, 1, 0},
        .oddFieldFirst = {{{0x3002, 0, 1}}},
        .shutter = {{{0x2004, 0, 12}}},
        .gain = {{{0x05, 0, 10}}},
        .gainFactor = FrontEndGain,
        .whiteLevel = 0.65,
        .pixelClock = 60e6,
        .lineBlanking = 504,
        .frameBlanking = 71 * 5400,
        .modelCode = 0x06E0,
    },
};

}  // namespace

std::span<const SensorMap> CcdSensors() {
  return kSensors;
}

}  // namespace zel
