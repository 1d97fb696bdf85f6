#include "sim/sensors/SensorMaps.h"

namespace zel {
namespace {

// From the strongest down: both bit pairs of 0x1E may be left set by a host that only ever adds them.
constexpr SkipRule kSkips[] = {
    {0x1E, 0x30, 0x30, 8},
    {0x1E, 0x0C, 0x0C, 4},
    {0x20, 0x18, 0x18, 2},
};

constexpr RegisterField kGain = {{{0x35, 0, 7}}};
constexpr RegisterField kFineGain = {{{0x2F, 0, 11}}};

/// 10 bits, 16-bit registers. 0x5F bit 7 (automatic threshold) and 0x1E bit 9 (flash output) are stored
/// without effect.
constexpr SensorMap Sensor16(const char16_t* family, int type, PixelSize size, ResetExposure reset,
                             const RegisterField& gain = kGain) {
  return {
      .type = type,
      .family = family,
      .width = size.width,
      .height = size.height,
      .bits = 10,
      .filter = ColourFilter::Grbg,
      .addressBytes = 1,
      .valueBytes = 2,
      .reset = reset,
      .left = {{{0x02, 0, 12}}},
      .top = {{{0x01, 0, 12}}},
      .leftOffset = 20,
      .topOffset = 12,
      .columns = {{{0x04, 0, 12}}},
      .rows = {{{0x03, 0, 12}}},
      .columnsBias = 1,
      .rowsBias = 1,
      .mirrorX = Bit(0x20, 14),
      .mirrorY = Bit(0x20, 15),
      .trigger = Bit(0x1E, 8),
      .halfClock = Bit(0x0A, 0),
      .skips = kSkips,
      .shutter = {{{0x09, 0, 14}}},
      .gain = gain,
      .gainFactor = LinearGain,
      .pixelClock = PixelClockOf(size),
      .lineBlanking = 244,
      .shortestLine = 553,
      .frameBlanking = 241,
  };
}

/// With all 20 bits of the shutter.
constexpr SensorMap LongShutter(SensorMap map) {
  map.shutter = {{{0x09, 0, 16, 0}, {0x08, 0, 4, 16}}};
  return map;
}

/// Behind a controller that addresses registers with 16 bits.
constexpr SensorMap Wide(SensorMap map, std::uint16_t modelCode = 0) {
  map.addressBytes = 2;
  map.modelCode = modelCode;
  return map;
}

constexpr SensorMap kSensors[] = {
    Sensor16(u"Usb", 13, {1280, 1024}, {1049, 14}),
    Sensor16(u"Usb", 14, {1280, 1024}, {1049, 14}),
    LongShutter(Sensor16(u"Usb", 15, {1668, 1248}, {1232, 32}, kFineGain)),
    Sensor16(u"Usb", 24, {1600, 1200}, {1049, 14}),
    Sensor16(u"Usb", 26, {2048, 1536}, {1049, 14}),
    LongShutter(Sensor16(u"Usb", 28, {2560, 1920}, {100, 14})),
    Sensor16(u"Usb", 31, {1600, 1200}, {1049, 14}),
    Sensor16(u"Usb", 34, {1440, 1080}, {1049, 14}),
    Sensor16(u"Usb", 46, {2048, 1536}, {1049, 14}),
    LongShutter(Sensor16(u"Usb", 48, {1600, 1200}, {1232, 32}, kFineGain)),
    Sensor16(u"Usb", 73, {1328, 1048}, {1049, 14}),
    Sensor16(u"Usb", 88, {1280, 1024}, {200, 18}),
    Sensor16(u"Wom", 59, {2048, 1536}, {1049, 14}),
    LongShutter(Sensor16(u"Wom", 65, {2560, 1920}, {1049, 14})),
    LongShutter(Sensor16(u"Wom", 67, {1280, 1024}, {1049, 14})),
    Wide(LongShutter(Sensor16(u"Disk", 45, {2560, 1920}, {100, 14})), 0x0250),
    Wide(LongShutter(Sensor16(u"Fx", 89, {2560, 1920}, {1049, 14}))),
    Wide(LongShutter(Sensor16(u"Fx", 98, {3096, 2080}, {1049, 14}))),
};

}  // namespace

std::span<const SensorMap> Map16Sensors() {
  return kSensors;
}

}  // namespace zel
