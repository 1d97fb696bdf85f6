#include "sim/sensors/SensorMaps.h"

namespace zel {
namespace {

constexpr RegisterValue kReset[] = {
    {0x01, 12}, {0x02, 20}, {0x03, 1023}, {0x04, 1279}, {0x09, 1049}, {0x35, 14},
};

// From the strongest down: both bit pairs of 0x1E may be left set by a host that only ever adds them.
constexpr SkipRule kSkips[] = {
    {0x1E, 0x30, 0x30, 8},
    {0x1E, 0x0C, 0x0C, 4},
    {0x20, 0x18, 0x18, 2},
};

/// 1280 x 1024, 10 bits, 16-bit registers. 0x5F bit 7 (automatic threshold) is stored without effect.
constexpr SensorMap Behind(const char16_t* family, int type) {
  return {
      .type = type,
      .family = family,
      .width = 1280,
      .height = 1024,
      .bits = 10,
      .filter = ColourFilter::Grbg,
      .addressBytes = 1,
      .valueBytes = 2,
      .resetValues = kReset,
      .left = {{{0x02, 0, 11}}},
      .top = {{{0x01, 0, 11}}},
      .leftOffset = 20,
      .topOffset = 12,
      .columns = {{{0x04, 0, 11}}},
      .rows = {{{0x03, 0, 11}}},
      .columnsBias = 1,
      .rowsBias = 1,
      .mirrorX = {{{0x20, 14, 1}}},
      .mirrorY = {{{0x20, 15, 1}}},
      .trigger = {{{0x1E, 8, 1}}},
      .skips = kSkips,
      .shutter = {{{0x09, 0, 14}}},
      .gain = {{{0x35, 0, 7}}},
      .gainFactor = LinearGain,
      .pixelClock = 48e6,
      .lineBlanking = 244,
      .shortestLine = 553,
      .frameBlanking = 241,
  };
}

constexpr RegisterValue kReset98[] = {
    {0x01, 12}, {0x02, 20}, {0x03, 2079}, {0x04, 3095}, {0x09, 1049}, {0x35, 14},
};

constexpr SkipRule kSkips98[] = {
    {0x1E, 0x3C, 0x30, 8},
    {0x1E, 0x3C, 0x0C, 4},
    {0x20, 0x18, 0x18, 2},
};

const SensorMap kSensors[] = {
    Behind(u"Usb", 13),
    Behind(u"Wom", 67),
    {
        .type = 98,
        .family = u"Fx",
        .width = 3096,
        .height = 2080,
        .bits = 10,
        .filter = ColourFilter::Grbg,
        .addressBytes = 2,
        .valueBytes = 2,
        .resetValues = kReset98,
        .left = {{{0x02, 0, 12}}},
        .top = {{{0x01, 0, 12}}},
        .leftOffset = 20,
        .topOffset = 12,
        .columns = {{{0x04, 0, 12}}},
        .rows = {{{0x03, 0, 12}}},
        .columnsBias = 1,
        .rowsBias = 1,
        .mirrorX = {{{0x20, 14, 1}}},
        .mirrorY = {{{0x20, 15, 1}}},
        .trigger = {{{0x1E, 8, 1}}},
        .halfClock = {{{0x0A, 0, 1}}},
        .skips = kSkips98,
        .shutter = {{{0x09, 0, 16, 0}, {0x08, 0, 4, 16}}},
        .gain = {{{0x35, 0, 6}}},
        .gainFactor = LinearGain,
        .pixelClock = 96e6,
        .lineBlanking = 244,
        .shortestLine = 553,
        .frameBlanking = 241,
    },
};

}  // namespace

std::span<const SensorMap> Map16Sensors() {
  return kSensors;
}

}  // namespace zel
