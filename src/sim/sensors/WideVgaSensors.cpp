#include <utility>

#include "sim/sensors/SensorMaps.h"

namespace zel {
namespace {

constexpr SkipRule kSkips[] = {{0x0D, 0x0C, 0x04, 2}};

constexpr double kPixelClock = 21e6;

/// 10 bits, 16-bit registers, up to 752 x 480.
constexpr SensorMap WideVga(const char16_t* family, int type, PixelSize size) {
  return {
      .type = type,
      .family = family,
      .width = size.width,
      .height = size.height,
      .bits = 10,
      .filter = ColourFilter::Grbg,
      .addressBytes = 1,
      .valueBytes = 2,
      .reset = ResetExposure{480, 16},
      .left = {{{0x01, 0, 10}}},
      .top = {{{0x02, 0, 10}}},
      .leftOffset = 1,
      .topOffset = 4,
      .columns = {{{0x04, 0, 10}}},
      .rows = {{{0x03, 0, 10}}},
      .mirrorX = Bit(0x0D, 5),
      .mirrorY = Bit(0x0D, 4),
      .trigger = Bit(0x07, 4),
      .skips = kSkips,
      .shutter = {{{0x0B, 0, 15}}},
      .gain = {{{0x35, 0, 7}}},
      .gainFactor = LinearGain,
      .pixelClock = kPixelClock,
      .lineBlanking = 94,
      .shortestLine = 660,
      .frameBlanking = 4 * 846,
  };
}

/// On its side: what its rows are, are the picture's columns.
constexpr SensorMap Turned(SensorMap map) {
  std::swap(map.left, map.top);
  std::swap(map.leftOffset, map.topOffset);
  std::swap(map.columns, map.rows);
  std::swap(map.mirrorX, map.mirrorY);
  map.turned = true;
  return map;
}

constexpr SensorMap kSensors[] = {
    WideVga(u"Usb", 9, {640, 480}),  WideVga(u"Usb", 10, {640, 480}), Turned(WideVga(u"Usb", 36, {480, 752})),
    WideVga(u"Usb", 38, {752, 480}), WideVga(u"Wom", 63, {752, 480}),
};

}  // namespace

std::span<const SensorMap> WideVgaSensors() {
  return kSensors;
}

}  // namespace zel
