#include "models/ModelTable.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <stdexcept>

#include "property/PropertyIds.h"

namespace zel {
namespace {

using Size = SensorSize;
using Range = SettingRange;
using enum Family;

constexpr Size k3x3{3, 3};
constexpr Size k4x3{4, 3};
constexpr Size k12x12{12, 12};
constexpr Range kOff{0, 0, 0, false};
constexpr auto kBlank = std::nullopt;
constexpr bool kFixed = true;

// Types 0 and 39 are converters whose window starts smaller than it may grow. Type 36 is the sensor of types
// 38 and 63 turned upright. Types 18 and 19 start with a shutter below their minimum: their fastest speed.
// The sensor of type 97 names no default shutter; it starts at its shortest.
// clang-format off
constexpr ModelRow kModels[] = {
    // type   documented full size        smallest gain                   shutter                  sub-sampling, default window
    {0,  Sata,   "t",        {8192, 8192}, k12x12, kOff,                  kOff,                    kBlank, Size{1280, 1024}},
    {1,  Sata,   "sghvtfwb", {2048, 1536}, k3x3,   Range{1, 63, 60},      Range{1, 6400, 300},     kBlank},
    {2,  Sata,   "t",        {2592, 1944}, k3x3,   Range{1, 63, 60},      Range{1, 6400, 300},     kBlank},
    {3,  Sata,   "t",        {752, 480},   k3x3,   Range{1, 63, 60},      Range{1, 6400, 300},     kBlank},
    {4,  Sata,   "t",        {1280, 1024}, k3x3,   kOff,                  Range{1, 6400, 300},     kBlank},
    {5,  Sata,   "t",        {3264, 2448}, k3x3,   Range{1, 63, 60},      Range{1, 6400, 300},     kBlank},
    {6,  Sata,   "t",        {1360, 1024}, k3x3,   Range{1, 1023, 200},   Range{8, 1068, 8},       kBlank},
    {7,  Sata,   "t",        {1600, 1200}, kBlank, kBlank,                kBlank,                  kBlank},
    {8,  Sata,   "t",        {2456, 2040}, k3x3,   Range{1, 1023, 200},   Range{2, 2079, 100},     kBlank},
    {9,  Usb20,  "sghv",     {640, 480},   k4x3,   Range{16, 64, 16},     Range{0, 32767, 480},    kBlank},
    {10, Usb20,  "sghv",     {640, 480},   k4x3,   Range{0, 127, 16},     Range{0, 32767, 480},    kBlank},
    {11, Usb20,  "t",        {640, 480},   k4x3,   Range{0, 767, 20},     Range{0, 524, 0},        kBlank},
    {12, Usb20,  "sgat",     {659, 494},   k4x3,   Range{0, 1023, 0},     Range{11, 525, 11},      kBlank},
    {13, Usb20,  "sgvtcxw",  {1280, 1024}, k4x3,   Range{0, 127, 14},     Range{0, 16383, 1049},   kBlank},
    {14, Usb20,  "sgvtcxw",  {1280, 1024}, k4x3,   Range{0, 127, 14},     Range{0, 16383, 1049},   kBlank},
    {15, Usb20,  "sghvtcxw", {1668, 1248}, k4x3,   Range{0, 2047, 32},    Range{0, 65535, 1232},   kBlank},
    {16, Usb20,  "",         {1280, 1024}, k4x3,   Range{0, 191, 63},     Range{1, 65535, 1000},   kBlank},
    {17, Usb20,  "",         {1600, 1200}, k4x3,   Range{0, 1024, 63},    Range{1, 65535, 1000},   kBlank},
    {18, Usb20,  "sgat",     {1600, 1200}, k4x3,   Range{0, 4095, 1000},  Range{2, 1493, 0},       kBlank},
    {19, Usb20,  "sgat",     {1620, 1220}, k4x3,   Range{0, 1023, 0},     Range{2, 1252, 0},       kBlank},
    {20, Usb20,  "sg",       {1360, 1024}, k4x3,   Range{0, 255, 100},    Range{0, 1067, 8},       kBlank},
    {21, Usb20,  "sgat",     {1360, 1024}, k4x3,   Range{0, 1023, 500},   Range{8, 1068, 8},       kBlank},
    {22, Usb20,  "sgat",     {1360, 1024}, k4x3,   Range{0, 1023, 500},   Range{8, 1068, 8},       kBlank},
    {23, Usb20,  "at",       {1360, 1024}, k4x3,   Range{0, 1023, 500},   Range{8, 1068, 8},       kBlank},
    {24, Usb20,  "sgvtcw",   {1600, 1200}, k4x3,   Range{0, 127, 14},     Range{1, 16383, 1049},   kBlank},
    {25, Usb20,  "s",        {1600, 1282}, k4x3,   Range{0, 511, 14},     Range{1, 1023, 6},       kBlank},
    {26, Usb20,  "sgvtcw",   {2048, 1536}, k4x3,   Range{0, 127, 14},     Range{1, 16383, 1049},   kBlank},
    {27, Usb20,  "sg",       {2288, 1700}, k4x3,   Range{0, 231, 128},    Range{0, 2047, 0},       kBlank},
    {28, Usb20,  "sghvtcw",  {2560, 1920}, k4x3,   Range{0, 63, 14},      Range{1, 65536, 100},    kBlank},
    {29, Usb20,  "sg",       {2560, 1920}, k4x3,   Range{0, 1023, 256},   Range{0, 2047, 256},     kBlank},
    {30, Usb20,  "",         {3320, 2500}, k4x3,   Range{0, 1023, 0},     Range{2, 2079, 1370},    kBlank},
    {31, Usb20,  "sgvtcw",   {1600, 1200}, k4x3,   Range{0, 127, 14},     Range{1, 16383, 1049},   kBlank},
    {32, Usb20,  "sghvt",    {3488, 2616}, k4x3,   Range{0, 32767, 14},   Range{1, 1048575, 100},  2},
    {33, Usb20,  "sg",       {2584, 1960}, k4x3,   Range{0, 1023, 0},     Range{0, 1014, 128},     kBlank},
    {34, Usb20,  "sgvxw",    {1440, 1080}, k4x3,   Range{0, 127, 14},     Range{2, 16383, 1049},   kBlank},
    {35, Sata,   "t",        {1440, 1080}, k3x3,   Range{0, 127, 14},     Range{2, 16383, 1049},   kBlank},
    {36, Usb20,  "sghv",     {480, 752},   k4x3,   Range{0, 127, 16},     Range{0, 32767, 480},    kBlank},
    {37, Usb20,  "sgat",     {1280, 950},  k4x3,   Range{0, 1023, 146},   Range{3, 2079, 3},       kBlank},
    {38, Usb20,  "sg",       {752, 480},   k4x3,   Range{0, 127, 16},     Range{0, 32767, 480},    kBlank},
    {39, Sata,   "t",        {8192, 8192}, k12x12, kOff,                  kOff,                    kBlank, Size{1280, 1024}},
    {40, Usb20,  "at",       {1280, 950},  k4x3,   Range{0, 1023, 0},     Range{2, 2079, 1370},    kBlank},
    {41, Usb20,  "sgat",     {2456, 2058}, k4x3,   Range{0, 1023, 0},     Range{2, 2079, 1370},    kBlank},
    {42, Usb20,  "",         {860, 944},   k4x3,   kBlank,                kBlank,                  kBlank, kBlank, kFixed},
    {43, Usb20,  "sghvt",    {3856, 2764}, k4x3,   Range{0, 127, 64},     Range{1, 1048575, 1049}, kBlank},
    {44, Usb30,  "sghvt",    {3488, 2616}, k4x3,   Range{0, 32767, 4128}, Range{1, 1048575, 100},  2},
    {45, Usb30,  "hv",       {2560, 1920}, k4x3,   Range{0, 63, 14},      Range{1, 6400, 100},     kBlank},
    {46, Usb20,  "sgvtcw",   {2048, 1536}, k4x3,   Range{0, 127, 14},     Range{1, 16383, 1049},   kBlank},
    {47, Usb30,  "sg",       {1360, 1024}, k4x3,   Range{0, 1023, 500},   Range{8, 1068, 8},       kBlank},
    {48, Usb20,  "sghvtcxw", {1600, 1200}, k4x3,   Range{0, 2047, 32},    Range{0, 65535, 1232},   kBlank},
    {49, Usb30,  "sghv",     {4384, 3288}, k4x3,   Range{0, 127, 46},     Range{1, 8191, 1000},    2},
    {50, Usb30,  "sg",       {1360, 1024}, k4x3,   Range{0, 1023, 500},   Range{0, 1058, 8},       kBlank},
    {51, Usb20,  "sghv",     {4384, 3288}, k4x3,   Range{1, 8191, 14},    Range{1, 1048575, 100},  2},
    {52, Usb30,  "sg",       {2456, 2058}, k4x3,   Range{0, 1023, 14},    Range{2, 2078, 2},       kBlank},
    {53, Usb30,  "sg",       {1600, 1200}, k4x3,   Range{0, 1023, 100},   Range{2, 1250, 2},       kBlank},
    {54, Usb30,  "sg",       {6644, 4384}, k4x3,   Range{0, 511, 100},    Range{2, 2230, 2},       kBlank},
    {55, Usb30,  "sg",       {659, 494},   k4x3,   Range{0, 1023, 100},   Range{3, 524, 3},        kBlank},
    {56, Usb20,  "sgat",     {1280, 950},  k4x3,   Range{0, 1023, 500},   Range{8, 1068, 8},       kBlank},
    {57, Usb20,  "at",       {1280, 960},  k4x3,   Range{0, 1023, 500},   Range{3, 2079, 3},       kBlank},
    {58, Usb30,  "sg",       {4896, 3264}, k4x3,   Range{0, 511, 100},    Range{2, 2230, 2},       kBlank},
    {59, Wom,    "sghvtcwb", {2048, 1536}, k4x3,   Range{0, 63, 14},      Range{1, 16383, 1049},   2},
    {60, Usb30,  "sghv",     {3856, 2764}, k4x3,   Range{0, 127, 14},     Range{1, 8192, 100},     2},
    {61, Usb30,  "sghv",     {2048, 1080}, k4x3,   Range{0, 63, 32},      Range{1, 8192, 100},     2},
    {62, Usb30,  "sg",       {3296, 2472}, k4x3,   Range{0, 511, 100},    Range{2, 2230, 2},       kBlank},
    {63, Wom,    "sghvtc",   {752, 480},   k4x3,   Range{16, 64, 16},     Range{0, 32767, 480},    1},
    {64, Wom,    "gc",       {1280, 960},  k4x3,   Range{0, 1023, 512},   Range{3, 1003, 3},       1},
    {65, Wom,    "sghvtcwb", {2560, 1920}, k4x3,   Range{0, 63, 14},      Range{0, 16383, 1049},   2},
    {66, Wom,    "gtc",      {1360, 1024}, k4x3,   Range{0, 1023, 512},   Range{8, 1074, 8},       1},
    {67, Wom,    "sghvtcwb", {1280, 1024}, k4x3,   Range{1, 63, 14},      Range{0, 32767, 1049},   2},
    {68, Wom,    "sghvtc",   {1328, 1048}, k4x3,   Range{1, 119, 104},    Range{1, 1082, 1049},    2},
    {69, Wom,    "sghvc",    {3488, 2616}, k4x3,   Range{0, 127, 32},     Range{1, 8191, 100},     2},
    {70, Usb20,  "sghvt",    {3856, 2764}, k4x3,   Range{0, 127, 64},     Range{1, 8192, 100},     2},
    {71, Wom,    "sghvc",    {3856, 2764}, k4x3,   Range{0, 127, 14},     Range{1, 8192, 100},     2},
    {72, Wom,    "sgtc",     {1600, 1200}, k4x3,   Range{0, 1023, 512},   Range{2, 1252, 2},       1},
    {73, Usb20,  "sgvtcxw",  {1328, 1048}, k4x3,   Range{0, 127, 14},     Range{0, 16383, 1049},   kBlank},
    {74, Usb20,  "a",        {1360, 1024}, k4x3,   Range{0, 1023, 500},   Range{8, 1068, 8},       kBlank},
    {75, Usb30,  "sg",       {6576, 4384}, k4x3,   Range{0, 1023, 100},   Range{1, 4455, 2},       kBlank},
    {76, Usb30,  "sg",       {2336, 1752}, k4x3,   Range{0, 1023, 100},   Range{2, 4453, 2},       kBlank},
    {77, Wom,    "sgc",      {2560, 1920}, k4x3,   Range{0, 1023, 512},   Range{3, 1003, 3},       1},
    {78, Usb30,  "sg",       {4896, 3264}, k4x3,   Range{0, 1023, 100},   Range{2, 4453, 2},       kBlank},
    {79, Usb30,  "sg",       {1920, 1080}, k4x3,   Range{0, 1023, 100},   Range{2, 4453, 2},       kBlank},
    {80, Usb30,  "sg",       {1600, 1200}, k4x3,   Range{0, 1023, 100},   Range{2, 4453, 2},       kBlank},
    {81, Usb30,  "sg",       {1024, 1024}, k4x3,   Range{0, 1023, 100},   Range{2, 4453, 2},       kBlank},
    {82, Wom,    "sghvc",    {4608, 3288}, k4x3,   Range{0, 127, 32},     Range{1, 16383, 1200},   2},
    {83, Usb30,  "sg",       {3296, 2472}, k4x3,   Range{0, 1023, 100},   Range{2, 2522, 2},       kBlank},
    {84, Wom,    "sgc",      {2456, 2058}, k4x3,   Range{0, 1023, 310},   Range{2, 2078, 2},       1},
    {85, Wom,    "sgc",      {656, 494},   k4x3,   Range{0, 1023, 310},   Range{2, 524, 2},        1},
    {86, Wom,    "sghvc",    {1280, 960},  k4x3,   Range{28, 127, 32},    Range{1, 9600, 200},     2},
    {87, Usb20,  "sgvt",     {1280, 720},  k4x3,   Range{1, 119, 104},    Range{0, 1280, 1049},    2},
    {88, Usb20,  "sgvtcxw",  {1280, 1024}, k4x3,   Range{512, 4096, 600}, Range{0, 1080, 200},     kBlank},
    {89, Usb3T2, "sghvt",    {2560, 1920}, k4x3,   Range{0, 63, 14},      Range{0, 16383, 1049},   3},
    {90, Usb3T2, "sghv",     {4608, 3288}, k4x3,   Range{0, 127, 32},     Range{1, 16383, 802},    2},
    {91, Usb3T2, "sghv",     {3856, 2764}, k4x3,   Range{0, 127, 14},     Range{1, 8192, 100},     2},
    {92, Usb3T2, "sg",       {1600, 1200}, k4x3,   Range{0, 1023, 512},   Range{2, 1252, 2},       1},
    {93, Usb3T2, "sg",       {2464, 2058}, k4x3,   Range{0, 1023, 310},   Range{2, 2078, 2},       1},
    {94, Usb3T2, "sg",       {656, 494},   k4x3,   Range{0, 1023, 310},   Range{2, 524, 2},        1},
    {95, Usb3T2, "sg",       {2464, 2058}, k4x3,   Range{0, 1023, 310},   Range{2, 2078, 2},       1},
    {96, Usb3T2, "sghv",     {1280, 960},  k4x3,   Range{0, 720, 34},     Range{2, 958, 511},      3},
    {97, Usb3T2, "sghv",     {1280, 720},  k4x3,   Range{0, 63, 14},      Range{0, 3, 0, true, false}, 3},
    {98, Usb3T2, "sghvt",    {3096, 2080}, k4x3,   Range{0, 63, 14},      Range{0, 16383, 1049},   3},
};
// clang-format on
static_assert(std::size(kModels) == kModelCount);

// Letters of the column "documented".
struct DocumentedLetter {
  char letter;
  LONG first, last;  ///< ids
};
constexpr DocumentedLetter kDocumented[] = {
    {'w', kRoiLeft, kRoiHeight},     {'b', kSubSampleX, kSubSampleY},
    {'h', kHorMirror, kHorMirror},   {'v', kVerMirror, kVerMirror},
    {'t', kExtTrigger, kExtTrigger}, {'c', kHalfClock, kHalfClock},
    {'f', kStrobe, kStrobe},         {'a', kAnalogGlobalGain, kAnalogGlobalGain},
    {'s', kShutter, kShutter},       {'g', kDigitalGlobalGain, kDigitalGlobalGain},
    {'x', kAutoThresh, kAutoThresh},
};
static_assert(std::ranges::all_of(kModels, [](const ModelRow& row) {
  return std::ranges::all_of(row.documented, [](char letter) {
    return std::ranges::find(kDocumented, letter, &DocumentedLetter::letter) != std::end(kDocumented);
  });
}));

struct FamilyText {
  const char* name;
  const char* driverWord;
};

constexpr FamilyText TextOf(Family family) {
  switch (family) {
    case Sata:
      return {"SATA", "Sata"};
    case Usb20:
      return {"USB 2.0", "Usb"};
    case Usb30:
      return {"USB 3.0", "Disk"};
    case Wom:
      return {"WOM", "Wom"};
    case Usb3T2:
      return {"USB3T2", "Fx"};
  }
  return {"", ""};
}

using DriverWord = std::array<OLECHAR, 12>;

constexpr std::array<DriverWord, kModelCount> MakeDriverNames() {
  std::array<DriverWord, kModelCount> names{};
  for (std::size_t n = 0; n < names.size(); ++n) {
    std::size_t at = 0;
    for (const char* part : {"Zel", TextOf(kModels[n].family).driverWord}) {
      for (; *part != 0; ++part) names[n][at++] = static_cast<OLECHAR>(*part);
    }
    names[n][at++] = static_cast<OLECHAR>('A' + n / 10);
    names[n][at++] = static_cast<OLECHAR>('A' + n % 10);
  }
  return names;
}

constexpr auto kDriverNames = MakeDriverNames();

}  // namespace

std::span<const ModelRow> AllModels() {
  return kModels;
}

const ModelRow& ModelOf(LONG type) {
  if (type < 0 || type >= kModelCount) throw std::out_of_range("no camera type " + std::to_string(type));
  return kModels[type];
}

bool IsDocumented(LONG type, LONG id) {
  return std::ranges::any_of(ModelOf(type).documented, [id](char letter) {
    const DocumentedLetter& row = *std::ranges::find(kDocumented, letter, &DocumentedLetter::letter);
    return id >= row.first && id <= row.last;
  });
}

const char* FamilyName(Family family) {
  return TextOf(family).name;
}

std::string DisplayName(LONG type) {
  const ModelRow& row = ModelOf(type);
  const std::string number = std::to_string(type);
  return std::string("ZEL ") + FamilyName(row.family) + ' ' + std::to_string(row.full.width) + 'x' +
         std::to_string(row.full.height) + " #" + (number.size() < 2 ? "0" : "") + number;
}

std::u16string DisplayNameUtf16(LONG type) {
  const std::string name = DisplayName(type);
  return {name.begin(), name.end()};
}

const OLECHAR* DriverName(LONG type) {
  return kDriverNames[static_cast<std::size_t>(ModelOf(type).type)].data();
}

}  // namespace zel
