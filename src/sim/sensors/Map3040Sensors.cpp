#include "sim/sensors/SensorMaps.h"

namespace zel {
namespace {

// Steps between the columns that are read, bits 6 to 8: 3 skips every other pair, 7 three of four.
constexpr SkipRule kSkips[] = {
    {0x3040, 0x01C0, 0x01C0, 4},
    {0x3040, 0x01C0, 0x00C0, 2},
};

// Exposure in lines: bits 0 to 15 in one of two registers, the rest in 0x0200.
constexpr RegisterField kCoarse = {{{0x0202, 0, 16, 0}, {0x0200, 0, 4, 16}}};
constexpr RegisterField kNative = {{{0x3012, 0, 16}}};

constexpr RegisterField kTrigger60 = Bit(0x3160, 0);
constexpr RegisterField kTrigger62 = Bit(0x3162, 7);

constexpr RegisterField GainBits(std::uint8_t count) {
  return {{{0x305E, 0, count}}};
}

/// Mantissa of 10 bits, exponent of 3 above it.
constexpr double ExponentGain(std::uint32_t code) {
  return (1.0 + (code & 0x3FF) / 1024.0) * (1 << (code >> 10));
}
constexpr RegisterField kExponentGain = {{{0x305E, 0, 10, 0}, {0x305E, 12, 3, 10}}};

/// 10 bits, 16-bit registers at 16-bit addresses.
constexpr SensorMap Sensor3040(const char16_t* family, int type, PixelSize size, const RegisterField& shutter,
                               const RegisterField& gain, ResetExposure reset) {
  return {
      .type = type,
      .family = family,
      .width = size.width,
      .height = size.height,
      .bits = 10,
      .filter = ColourFilter::Grbg,
      .addressBytes = 2,
      .valueBytes = 2,
      .reset = reset,
      .left = {{{0x0344, 0, 13}}},
      .top = {{{0x0346, 0, 13}}},
      .columns = {{{0x034C, 0, 13}}},
      .rows = {{{0x034E, 0, 13}}},
      .mirrorX = Bit(0x3040, 14),
      .mirrorY = Bit(0x3040, 15),
      .halfClock = Bit(0x0302, 1),
      .skips = kSkips,
      .shutter = shutter,
      .gain = gain,
      .gainFactor = LinearGain,
      .pixelClock = PixelClockOf(size),
      .lineBlanking = 400,
      .frameBlanking = 40'000,
  };
}

constexpr SensorMap WithTrigger(SensorMap map, const RegisterField& trigger) {
  map.trigger = trigger;
  return map;
}

constexpr SensorMap WithExponentGain(SensorMap map) {
  map.gainFactor = ExponentGain;
  return map;
}

constexpr SensorMap OnDisk(SensorMap map, std::uint16_t modelCode) {
  map.modelCode = modelCode;
  return map;
}

/// Shutter and gain as bytes in registers of their own.
constexpr RegisterField kByteShutter = {{{0x08, 0, 8, 0}, {0x09, 0, 8, 8}}};
constexpr RegisterField kByteGain = {{{0x1C, 0, 8, 0}, {0x1D, 0, 5, 8}}};

// clang-format off
constexpr SensorMap kSensors[] = {
    WithTrigger(WithExponentGain(Sensor3040(u"Usb", 32, {3488, 2616}, kCoarse, kExponentGain, {100, 14})), kTrigger60),
    WithTrigger(Sensor3040(u"Usb", 43, {3856, 2764}, kCoarse, GainBits(7), {1049, 64}), kTrigger62),
    Sensor3040(u"Usb", 51, {4384, 3288}, kCoarse, GainBits(13), {100, 14}),
    WithTrigger(Sensor3040(u"Usb", 70, {3856, 2764}, kNative, GainBits(7), {100, 64}), kTrigger62),
    WithTrigger(Sensor3040(u"Usb", 87, {1280, 720}, kByteShutter, kByteGain, {1049, 104}), Bit(0x301A, 8)),
    Sensor3040(u"Wom", 69, {3488, 2616}, kCoarse, GainBits(7), {100, 32}),
    Sensor3040(u"Wom", 71, {3856, 2764}, kNative, GainBits(7), {100, 14}),
    Sensor3040(u"Wom", 82, {4608, 3288}, kNative, GainBits(7), {1200, 0x30}),
    Sensor3040(u"Wom", 86, {1280, 960}, kNative, GainBits(7), {200, 32}),
    OnDisk(WithTrigger(WithExponentGain(Sensor3040(u"Disk", 44, {3488, 2616}, kCoarse, kExponentGain, {100, 4128})), kTrigger60), 0x0270),
    OnDisk(Sensor3040(u"Disk", 47, {1360, 1024}, kCoarse, GainBits(10), {8, 500}), 0x02C0),
    OnDisk(Sensor3040(u"Disk", 49, {4384, 3288}, kCoarse, GainBits(7), {1000, 46}), 0x0570),
    OnDisk(Sensor3040(u"Disk", 50, {1360, 1024}, kCoarse, GainBits(10), {8, 500}), 0x02E0),
    OnDisk(Sensor3040(u"Disk", 60, {3856, 2764}, kCoarse, GainBits(7), {100, 14}), 0x0540),
    Sensor3040(u"Fx", 90, {4608, 3288}, kNative, GainBits(7), {802, 0x30}),
    Sensor3040(u"Fx", 91, {3856, 2764}, kNative, GainBits(7), {100, 0x1E}),
};
// clang-format on

}  // namespace

std::span<const SensorMap> Map3040Sensors() {
  return kSensors;
}

}  // namespace zel
