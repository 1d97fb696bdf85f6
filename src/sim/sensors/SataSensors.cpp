#include <cmath>

#include "sim/SataWire.h"
#include "sim/sensors/SensorMaps.h"

namespace zel {
namespace {

constexpr VolumeSectors kCameraVolume{.command = 0x100, .areaA = 0x1000, .areaB = 0x9000};
constexpr VolumeSectors kConverterVolume{.command = 0x100, .areaA = 0x1000, .areaB = 0x41000};

// A register that always holds 1: what the sensor does not let anyone set.
constexpr std::uint16_t kFixed = 0xFFFF;
constexpr RegisterField kUnset = {{{kFixed, 0, 1}}};

constexpr RegisterField kTriggerOfController = {{{kControllerTrigger, 0, 1}}};

/// The analogue front end's amplifier: 36 dB over its 10 bits.
double FrontEndGain(std::uint32_t code) {
  return std::pow(10.0, code * (36.0 / 20 / 1023));
}

/// What the sensors have in common: size and clocks (Hz, clocks beside a line's columns) are their own.
constexpr SensorMap Sensor(int type, int width, int height, int bits, double pixelClock, int lineBlanking) {
  SensorMap map{};
  map.type = type;
  map.family = u"Sata";
  map.width = width;
  map.height = height;
  map.bits = bits;
  map.addressBytes = 1;
  map.valueBytes = 2;
  map.trigger = kTriggerOfController;
  map.gainFactor = LinearGain;
  map.pixelClock = pixelClock;
  map.lineBlanking = lineBlanking;
  map.frameBlanking = 3 * (width + lineBlanking);
  map.volume = kCameraVolume;
  return map;
}

struct WindowPlace {
  std::uint16_t rowStart, columnStart, rowSize, columnSize;
  int firstRow, firstColumn;
  int sizeBias = 1;
};

/// With the window in registers.
constexpr SensorMap Windowed(SensorMap map, const WindowPlace& place) {
  map.left = {{{place.columnStart, 0, 12}}};
  map.top = {{{place.rowStart, 0, 12}}};
  map.leftOffset = place.firstColumn;
  map.topOffset = place.firstRow;
  map.columns = {{{place.columnSize, 0, 12}}};
  map.rows = {{{place.rowSize, 0, 12}}};
  map.columnsBias = map.rowsBias = place.sizeBias;
  return map;
}

/// With the window cut out by the controller.
constexpr SensorMap Cut(SensorMap map) {
  map.left = {{{kControllerLeft, 0, 16}}};
  map.top = {{{kControllerTop, 0, 16}}};
  map.columns = {{{kControllerColumns, 0, 16}}};
  map.rows = {{{kControllerRows, 0, 16}}};
  return map;
}

/// With exposure and gain in these registers.
constexpr SensorMap Exposed(SensorMap map, const RegisterField& shutter, const RegisterField& gain,
                            std::span<const RegisterValue> reset) {
  map.shutter = shutter;
  map.gain = gain;
  map.resetValues = reset;
  return map;
}

constexpr SensorMap Mirrored(SensorMap map, const RegisterField& x, const RegisterField& y) {
  map.mirrorX = x;
  map.mirrorY = y;
  return map;
}

constexpr RegisterField kShutter16 = {{{0x09, 0, 16}}};
constexpr RegisterField kGain16 = {{{0x35, 0, 16}}};
constexpr RegisterField kMirrorX16 = {{{0x20, 14, 1}}};
constexpr RegisterField kMirrorY16 = {{{0x20, 15, 1}}};
constexpr RegisterField kTrigger16 = {{{0x1E, 8, 1}}};

// 16-bit registers, 10 bits. Sub-sampling (0x22, 0x23) is stored without effect.
constexpr RegisterValue kReset1[] = {
    {0x01, 20}, {0x02, 32}, {0x03, 1535}, {0x04, 2047}, {0x09, 300}, {0x35, 60},
};
constexpr RegisterValue kReset2[] = {
    {0x01, 20}, {0x02, 32}, {0x03, 1943}, {0x04, 2591}, {0x09, 300}, {0x35, 60},
};
constexpr WindowPlace kWindow1{0x01, 0x02, 0x03, 0x04, 20, 32};
constexpr SensorMap Map16(int type, int width, int height, double pixelClock,
                          std::span<const RegisterValue> reset) {
  const SensorMap sensor = Windowed(Sensor(type, width, height, 10, pixelClock, 520), kWindow1);
  return Mirrored(Exposed(sensor, kShutter16, kGain16, reset), kMirrorX16, kMirrorY16);
}
constexpr SensorMap Triggered(SensorMap map, const RegisterField& trigger) {
  map.trigger = trigger;
  return map;
}

// Wide VGA: the size registers hold whole sizes.
constexpr RegisterValue kReset3[] = {
    {0x01, 1}, {0x02, 4}, {0x03, 480}, {0x04, 752}, {0x0B, 300}, {0x35, 60},
};
constexpr WindowPlace kWindow3{0x02, 0x01, 0x03, 0x04, 4, 1, 0};

constexpr RegisterValue kReset4[] = {
    {0x01, 12}, {0x02, 20}, {0x03, 1023}, {0x04, 1279}, {0x09, 300}, {kFixed, 1},
};
constexpr RegisterValue kReset35[] = {
    {0x01, 12}, {0x02, 20}, {0x03, 1079}, {0x04, 1439}, {0x09, 1049}, {0x35, 14},
};
constexpr WindowPlace kWindow4{0x01, 0x02, 0x03, 0x04, 12, 20};

/// Registers of one byte: values take two, the high one first.
constexpr RegisterField Bytes(std::uint16_t address) {
  return {{{address, 0, 8, 8}, {static_cast<std::uint16_t>(address + 1), 0, 8}}};
}
constexpr RegisterValue kReset5[] = {
    {0x10, 300 >> 8},  {0x11, 300 & 0xFF},  {0x17, 60},        {0x21, 8},           {0x23, 16},
    {0x24, 2447 >> 8}, {0x25, 2447 & 0xFF}, {0x26, 3263 >> 8}, {0x27, 3263 & 0xFF},
};
constexpr SensorMap ByteRegisters(SensorMap map) {
  map.valueBytes = 1;
  map.left = Bytes(0x22);
  map.top = Bytes(0x20);
  map.leftOffset = 16;
  map.topOffset = 8;
  map.columns = Bytes(0x26);
  map.rows = Bytes(0x24);
  map.columnsBias = map.rowsBias = 1;
  return map;
}

// CCDs behind a front end. The light is that of a flash: a few lines suffice.
constexpr RegisterValue kReset6[] = {
    {0x90, 10}, {0x92, 40}, {0x94, 1023}, {0x96, 1359}, {0x9E, 8}, {0x06, 200 & 0x3F}, {0x07, 200 >> 6},
};
constexpr WindowPlace kWindow6{0x90, 0x92, 0x94, 0x96, 10, 40};
constexpr RegisterField kShutter6 = {{{0x9E, 0, 6}, {0x9F, 0, 6, 6}}};
constexpr RegisterField kGain6 = {{{0x06, 0, 6}, {0x07, 0, 4, 6}}};

constexpr RegisterValue kReset7[] = {{0x09, 300}, {0x35, 800}};

constexpr RegisterValue kReset8[] = {{0x04, 200}, {0x9A, 100 | 0x802000}};
constexpr RegisterField kShutter8 = {{{0x9A, 0, 12}}};
constexpr RegisterField kGain8 = {{{0x04, 0, 10}}};

constexpr SensorMap FrontEnd(SensorMap map, int valueBytes) {
  map.valueBytes = valueBytes;
  map.gainFactor = FrontEndGain;
  return map;
}

constexpr RegisterValue kResetConverter[] = {{kFixed, 1}};

/// A converter whose source has 1280 x 1024 pixels; beyond them it repeats their edge.
constexpr SensorMap Converter(int type, std::uint32_t lockMs) {
  SensorMap map = Cut(Exposed(Sensor(type, 1280, 1024, 10, 40e6, 320), kUnset, kUnset, kResetConverter));
  map.volume = kConverterVolume;
  map.lockMs = lockMs;
  return map;
}

const SensorMap kSensors[] = {
    Converter(0, 0),
    Triggered(Map16(1, 2048, 1536, 48e6, kReset1), kTrigger16),
    Map16(2, 2592, 1944, 96e6, kReset2),
    Mirrored(Exposed(Windowed(Sensor(3, 752, 480, 10, 26.6e6, 94), kWindow3), {{{0x0B, 0, 16}}},
                     {{{0x35, 0, 7}}}, kReset3),
             {{{0x0D, 5, 1}}}, {{{0x0D, 4, 1}}}),
    Exposed(Windowed(Sensor(4, 1280, 1024, 10, 48e6, 244), kWindow4), kShutter16, kUnset, kReset4),
    Exposed(ByteRegisters(Sensor(5, 3264, 2448, 10, 96e6, 400)), Bytes(0x10), Bytes(0x16), kReset5),
    FrontEnd(Exposed(Windowed(Sensor(6, 1360, 1024, 10, 25e6, 430), kWindow6), kShutter6, kGain6, kReset6),
             2),
    Triggered(Cut(Exposed(Sensor(7, 1600, 1200, 10, 48e6, 244), kShutter16, kGain16, kReset7)), kTrigger16),
    Triggered(FrontEnd(Cut(Exposed(Sensor(8, 2456, 2040, 10, 60e6, 544), kShutter8, kGain8, kReset8)), 3),
              {{{0x20, 0, 1}}}),
    Mirrored(Exposed(Windowed(Sensor(35, 1440, 1080, 10, 48e6, 244), kWindow4), {{{0x09, 0, 14}}},
                     {{{0x35, 0, 7}}}, kReset35),
             {}, kMirrorY16),
    Converter(39, 80),  // two frames at 25 Hz
};

}  // namespace

std::span<const SensorMap> SataSensors() {
  return kSensors;
}

}  // namespace zel
