#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <string_view>

#include "sim/sensors/SensorMaps.h"

namespace zel {
namespace {

/// The front end's amplifiers: 36 dB over the range of the digital gain, and 24 dB over the 8 bits of the
/// analogue one, which stand above it.
template <int kFull>
double FrontEndGain(std::uint32_t code) {
  const double digital = (code & 0xFFFF) * (36.0 / kFull);
  const double analogue = (code >> 16) * (24.0 / 255);
  return std::pow(10.0, (digital + analogue) / 20);
}

constexpr RegisterBits kAnalogGain = {0x08, 0, 8, 16};

// A setting of a whole register, and of two with 6 or 8 bits in the lower one.
constexpr RegisterField In(std::uint16_t address, std::uint8_t bits) {
  return {{{address, 0, bits}}};
}
constexpr RegisterField Split6(std::uint16_t address, std::uint8_t highBits) {
  return {{{address, 0, 6}, {static_cast<std::uint16_t>(address + 1), 0, highBits, 6}}};
}
constexpr RegisterField Split8(std::uint16_t address, std::uint8_t highBits) {
  return {{{address, 0, 8}, {static_cast<std::uint16_t>(address + 1), 0, highBits, 8}}};
}
constexpr RegisterField WithAnalogGain(RegisterField digital) {
  digital[2] = kAnalogGain;
  return digital;
}

constexpr SkipRule kSkips[] = {{0x38, 1, 1, 2}};
constexpr SkipRule kSkips8003[] = {{0x8018, 1, 1, 2}};
constexpr RegisterValue kProgressive[] = {{0x3001, 1}};

/// Where a kind of timing generator and front end has its settings.
struct Kind {
  int valueBytes;
  RegisterField shutter;
  RegisterField gain;
  double (*gainFactor)(std::uint32_t) = FrontEndGain<1023>;
  std::uint16_t window = 0x30;
  std::span<const SkipRule> skips = kSkips;
};

constexpr std::uint16_t kFpga = 0x100;  // where FPGA registers stand among those of the sensor

constexpr RegisterField kFpgaShutter = In(kFpga + 0x9A, 13);
constexpr RegisterField kFpgaGain = WithAnalogGain(In(kFpga + 0x04, 10));

// By the bytes of a register.
constexpr Kind kSplitByte = {1, Split6(0x9E, 6), WithAnalogGain(Split6(0x06, 4))};
constexpr Kind kSplitByte12 = {1, Split6(0x9E, 6), WithAnalogGain(Split8(0x06, 4)), FrontEndGain<4095>};
constexpr Kind kFpgaByte = {1, kFpgaShutter, kFpgaGain};
constexpr Kind kFpgaWord = {2, kFpgaShutter, In(kFpga + 0x04, 16), FrontEndGain<65535>};
constexpr Kind kFpgaWide = {3, kFpgaShutter, kFpgaGain};
constexpr Kind kWord9A = {2, In(0x9A, 13), In(0x04, 10)};
constexpr Kind kWide9A = {3, In(0x9A, 13), WithAnalogGain(In(0x04, 10))};
constexpr Kind kWide01 = {3, In(0x01, 12), In(0x00, 8), FrontEndGain<255>};
constexpr Kind kWide00 = {3, In(0x00, 10), kFpgaGain};
constexpr Kind kWord0D = {2, In(0x0D, 11), In(0x02, 8), FrontEndGain<255>};
constexpr Kind kWord01 = {2, In(0x01, 11), In(0x00, 10)};
constexpr Kind kByteA4 = {1, Split8(0xA4, 3), Split8(0x02, 2)};
constexpr Kind kByteA0 = {1, Split8(0xA0, 3), Split8(0x02, 2)};
constexpr Kind kWord8003 = {2, In(0x8003, 12), In(0x05, 10), FrontEndGain<1023>, 0x8010, kSkips8003};
constexpr Kind kWord2004 = {2, In(0x2004, 13), In(0x05, 10), FrontEndGain<1023>, 0x2010};

/// What a camera has besides.
enum Feature : unsigned {
  kNothing = 0,
  kFields = 1,        ///< always read out in two fields
  kTriggered = 2,     ///< by register 0x20
  kClockHalved = 4,   ///< by register 0x22
  kMirrors = 8,       ///< by register 0x0A
  kWindowClock = 32,  ///< halved by the register behind those of the window
  kBinning = 16,      ///< sums pixels; may read out in fields
};

struct Sheet {
  int type;
  const char16_t* family;
  int width, height;
  Kind kind;
  ResetExposure reset;
  double framesPerSecond;  ///< of the whole frame, with a short shutter
  unsigned features = kNothing;
  std::uint16_t modelCode = 0;
};

// The light is that of a flash: at reset a few lines suffice.
// clang-format off
constexpr Sheet kSheets[] = {
    // type, family, size, map, reset, frames a second, features, model code
    {11, u"Usb",  640,  480,  kFpgaByte,    {0, 20},     50, kTriggered | kClockHalved},
    {12, u"Usb",  659,  494,  kSplitByte,   {11, 0},     50, kTriggered | kClockHalved},
    {18, u"Usb",  1600, 1200, kSplitByte12, {0, 1000},   12, kTriggered},
    {19, u"Usb",  1620, 1220, kSplitByte,   {0, 0},      12, kTriggered},
    {20, u"Usb",  1360, 1024, kWide01,      {8, 100},    15},
    {21, u"Usb",  1360, 1024, kSplitByte,   {8, 500},    15, kTriggered | kClockHalved},
    {22, u"Usb",  1360, 1024, kSplitByte,   {8, 500},    15, kTriggered},
    {23, u"Usb",  1360, 1024, kFpgaByte,    {8, 500},    15, kTriggered},
    {25, u"Usb",  1600, 1282, kWide00,      {6, 14},     12},
    {27, u"Usb",  2288, 1700, kWord0D,      {0, 128},     8},
    {29, u"Usb",  2560, 1920, kWord01,      {256, 256},   6, kFields},
    {30, u"Usb",  3320, 2500, kFpgaWide,    {1370, 0},    5, kFields | kMirrors},
    {33, u"Usb",  2584, 1960, kByteA4,      {128, 0},     6, kFields},
    {37, u"Usb",  1280, 950,  kWide9A,      {3, 146},    20, kTriggered},
    {40, u"Usb",  1280, 950,  kFpgaWide,    {1370, 0},   20, kTriggered},
    {41, u"Usb",  2456, 2058, kWide9A,      {1370, 0},    6, kTriggered | kFields},
    {42, u"Usb",  860,  944,  kFpgaWord,    {300, 800},  25},
    {52, u"Disk", 2456, 2058, kWord9A,      {2, 14},     15, kNothing, 0x0630},
    {53, u"Disk", 1600, 1200, kWord9A,      {2, 100},    30, kNothing, 0x0300},
    {54, u"Disk", 6644, 4384, kWord9A,      {2, 100},     5, kFields, 0x0640},
    {55, u"Disk", 659,  494,  kWord9A,      {3, 100},    60, kFields, 0x0650},
    {56, u"Usb",  1280, 950,  kSplitByte,   {8, 500},    20, kTriggered},
    {57, u"Usb",  1280, 960,  kFpgaWide,    {3, 500},    20, kTriggered},
    {58, u"Disk", 4896, 3264, kWord9A,      {2, 100},     5, kFields, 0x0660},
    {62, u"Disk", 3296, 2472, kWord9A,      {2, 100},    10, kNothing, 0x0690},
    {64, u"Wom",  1280, 960,  kSplitByte,   {3, 512},    20},
    {66, u"Wom",  1360, 1024, kSplitByte,   {8, 512},    20, kTriggered},
    {72, u"Wom",  1600, 1200, kSplitByte,   {2, 512},    15, kTriggered},
    {74, u"Usb",  1360, 1024, kFpgaByte,    {8, 500},    15},
    {75, u"Disk", 6576, 4384, kWord2004,    {3, 100},     5, kBinning, 0x06C0},
    {76, u"Disk", 2336, 1752, kWord2004,    {2, 100},    15, kBinning, 0x06D0},
    {77, u"Wom",  2560, 1920, kByteA0,      {3, 512},     6, kFields},
    {78, u"Disk", 4896, 3264, kWord2004,    {2, 100},     5, kBinning, 0x06E0},
    {79, u"Disk", 1920, 1080, kWord2004,    {2, 100},    30, kBinning, 0x06F0},
    {80, u"Disk", 1600, 1200, kWord2004,    {2, 100},    30, kBinning, 0x0790},
    {81, u"Disk", 1024, 1024, kWord2004,    {1, 100},    50, kBinning, 0x0700},
    {83, u"Disk", 3296, 2472, kWord2004,    {3, 100},    10, kBinning, 0x0730},
    {84, u"Wom",  2456, 2058, kWord9A,      {2, 310},     8},
    {85, u"Wom",  656,  494,  kWord9A,      {2, 310},    50},
    {92, u"Fx",   1600, 1200, kWord8003,    {2, 512},    40, kWindowClock},
    {93, u"Fx",   2464, 2058, kWord8003,    {2, 310},    20, kWindowClock},
    {94, u"Fx",   656,  494,  kWord9A,      {2, 310},    60, kWindowClock},
    {95, u"Fx",   2464, 2058, kWord8003,    {2, 310},    20, kWindowClock},
};
// clang-format on

constexpr int kLineBlanking = 504;  // clocks
constexpr int kBlankLines = 71;

/// Lines of exposure in cameras whose shutter may be 0: they expose while their charge moves, too.
double WithTransfer(std::uint32_t code) {
  return code + 256.0;
}

constexpr SensorMap MapOf(const Sheet& sheet) {
  const Kind& kind = sheet.kind;
  const auto has = [&](Feature feature) { return (sheet.features & feature) != 0; };
  const auto behindWindow = [&](int offset) { return static_cast<std::uint16_t>(kind.window + offset); };
  const auto size = [&](int offset) {
    return kind.valueBytes == 1 ? Split8(behindWindow(offset), 5) : In(behindWindow(offset), 13);
  };
  const std::u16string_view family = sheet.family;
  SensorMap map = {
      .type = sheet.type,
      .family = sheet.family,
      .width = sheet.width,
      .height = sheet.height,
      .bits = 10,
      .addressBytes = family == u"Usb" || family == u"Wom" ? 1 : 2,
      .valueBytes = kind.valueBytes,
      .reset = sheet.reset,
      .left = size(0),
      .top = size(2),
      .columns = size(4),
      .rows = size(6),
      .fpgaRegisters = kFpga,
      .shutter = kind.shutter,
      .shutterLines = sheet.reset.shutter == 0 ? WithTransfer : nullptr,
      .gain = kind.gain,
      .gainFactor = kind.gainFactor,
      .whiteLevel = 0.65,
      .pixelClock = sheet.framesPerSecond * (sheet.width + kLineBlanking) * (sheet.height + kBlankLines),
      .lineBlanking = kLineBlanking,
      .frameBlanking = kBlankLines * (sheet.width + kLineBlanking),
      .modelCode = sheet.modelCode,
  };
  if (has(kTriggered)) map.trigger = Bit(0x20, 0);
  if (has(kClockHalved)) map.halfClock = Bit(0x22, 0);
  if (has(kWindowClock)) map.halfClock = Bit(behindWindow(10), 0);
  if (has(kMirrors)) map.mirrorX = Bit(0x0A, 0);
  if (has(kMirrors)) map.mirrorY = Bit(0x0A, 1);
  if (has(kFields)) map.fieldReadout = RegisterMatch{0, 0, 0};
  if (has(kBinning)) {
    map.binX = Bit(behindWindow(8), 1);
    map.binY = Bit(behindWindow(8), 0);
    map.fieldReadout = RegisterMatch{0x3001, 1, 0};
    map.oddFieldFirst = Bit(0x3002, 0);
    map.resetValues = kProgressive;
  } else {
    map.skips = kind.skips;
  }
  return map;
}

constexpr auto kSensors = [] {
  std::array<SensorMap, std::size(kSheets)> maps;
  std::ranges::transform(kSheets, maps.begin(), MapOf);
  return maps;
}();

}  // namespace

std::span<const SensorMap> CcdSensors() {
  return kSensors;
}

}  // namespace zel
