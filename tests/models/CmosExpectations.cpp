#include "models/ModelExpectations.h"
#include "property/CZELDevicePropertyImpl.h"

namespace zel::test {
namespace {

constexpr Setter kAutoThreshSetter = &CZELDeviceProperty::SetAutoThresh;
constexpr Setter kBalanceSetter = &CZELDeviceProperty::SetAutoWhiteBalance;
constexpr Setter kPortSetter = &CZELDeviceProperty::SetIO;
constexpr Setter kLargeFrameSetter = &CZELDeviceProperty::SetLargeFrameOption;

// The records of the setters without one show that nothing else was touched.
// clang-format off
constexpr Expectation kCmos[] = {
    // 16-bit registers, USB 2.0: masked.
    {13, kGainSetter, 200, "write 35=48", kDigitalGlobalGain, 14, E_INVALIDARG},
    {14, kShutterSetter, 20000, "write 9=E20", kShutter, 3616},
    {14, kGainSetter, 200, "write 35=48", kDigitalGlobalGain, 72},
    {14, kVerMirrorSetter, 1, "read 20=0; write 20=8000", kVerMirror, 1},
    {14, kTriggerSetter, 1, "read 1E=0; write 1E=100", kExtTrigger, 1},
    {14, kAutoThreshSetter, 1, "read 5F=0; write 5F=80", kAutoThresh, 1},
    {15, kShutterSetter, 65537, "write 9=1", kShutter, 1},
    {15, kGainSetter, 0x900, "write 2F=100", kDigitalGlobalGain, 256},
    {15, kHorMirrorSetter, 1, "read 20=0; write 20=4000", kHorMirror, 1},
    {15, kAutoThreshSetter, 1, "read 5F=0; write 5F=80", kAutoThresh, 1},
    {15, kBalanceSetter, 1, "write F0=1; read 6=0; write 6=2", kShutter, 1232},
    {24, kShutterSetter, 0x4000, "write 9=0", kShutter, 1049, E_INVALIDARG},
    {24, kGainSetter, 130, "write 35=2", kDigitalGlobalGain, 2},
    {24, kPortSetter, 4, "read 1E=0; write 1E=200", kExtTrigger, 0},
    {24, kAutoThreshSetter, 1, "", kAutoThresh, 0, E_NOTIMPL},
    {26, kShutterSetter, 16383, "write 9=3FFF", kShutter, 16383},
    {26, kTriggerSetter, 1, "read 1E=0; write 1E=100", kExtTrigger, 1},
    {28, kShutterSetter, 65536, "write 9=0; write 8=1", kShutter, 65536},
    {28, kShutterSetter, 0x10F423, "write 9=F423; write 8=0", kShutter, 0xF423},
    {28, kGainSetter, 64, "write 35=40", kDigitalGlobalGain, 14, E_INVALIDARG},
    {28, kVerMirrorSetter, 1, "read 20=0; write 20=8000", kVerMirror, 1},
    {31, kGainSetter, 127, "write 35=7F", kDigitalGlobalGain, 127},
    {31, kVerMirrorSetter, 0, "read 20=0; write 20=0", kVerMirror, 0},
    {34, kShutterSetter, 1, "write 9=1", kShutter, 1049, E_INVALIDARG},
    {34, kGainSetter, 128, "write 35=0", kDigitalGlobalGain, 0},
    {34, kTriggerSetter, 1, "", kExtTrigger, 0, E_NOTIMPL},
    {34, kHalfClockSetter, 1, "read A=0; write A=1", kHalfClock, 1},
    {46, kShutterSetter, 5, "write 9=5", kShutter, 5},
    {46, kPortSetter, 8, "read 1E=0; write 1E=0", kExtTrigger, 0},
    {48, kGainSetter, 2047, "write 2F=7FF", kDigitalGlobalGain, 2047},
    {48, kBalanceSetter, 0, "write F0=1; read 6=0; write 6=0", kShutter, 1232},
    {73, kShutterSetter, 0x4003, "write 9=3", kShutter, 3},
    {73, kAutoThreshSetter, 1, "read 5F=0; write 5F=80", kAutoThresh, 1},
    {88, kShutterSetter, 1081, "write 9=439", kShutter, 200, E_INVALIDARG},
    {88, kGainSetter, 4096, "write 35=7F", kDigitalGlobalGain, 4096},
    {88, kGainSetter, 600, "write 35=12", kDigitalGlobalGain, 600},
    {88, kGainSetter, 100, "write 35=3", kDigitalGlobalGain, 600, E_INVALIDARG},
    // The other families clamp.
    {45, kShutterSetter, 7000, "read 9=64; write 9=1900", kShutter, 6400},
    {45, kGainSetter, 99, "read 35=E; write 35=3F", kDigitalGlobalGain, 63},
    {45, kVerMirrorSetter, 1, "read 20=0; write 20=8000", kVerMirror, 1},
    {45, kTriggerSetter, 1, "", kExtTrigger, 0, E_NOTIMPL},
    {59, kShutterSetter, 40000, "write 9=3FFF", kShutter, 16383},
    {59, kGainSetter, 100, "write 35=3F", kDigitalGlobalGain, 63},
    {59, kHorMirrorSetter, 1, "read 20=0; write 20=4000", kHorMirror, 1},
    {59, kTriggerSetter, 1, "read 1E=0; write 1E=100", kExtTrigger, 1},
    {65, kShutterSetter, 0x12345, "write 9=3FFF; write 8=0", kShutter, 0x3FFF},
    {65, kGainSetter, -1, "write 35=0", kDigitalGlobalGain, 0},
    {67, kShutterSetter, 40000, "write 9=7FFF", kShutter, 32767},
    {89, kShutterSetter, 99999, "write 9=3FFF; write 8=0", kShutter, 0x3FFF},
    {89, kGainSetter, 64, "write 35=3F", kDigitalGlobalGain, 63},
    {89, kTriggerSetter, 1, "read 1E=0; write 1E=100", kExtTrigger, 1},
    {89, kHalfClockSetter, 1, "", kHalfClock, 1},
    {98, kShutterSetter, 0x12345, "write 9=3FFF; write 8=0", kShutter, 0x3FFF},

    // The 752 x 480 sensor.
    {9, kShutterSetter, 0x8001, "write B=1", kShutter, 1},
    {9, kGainSetter, 15, "write 35=F", kDigitalGlobalGain, 16, E_INVALIDARG},
    {9, kHorMirrorSetter, 1, "read D=0; write D=20", kHorMirror, 1},
    {9, kVerMirrorSetter, 1, "read D=0; write D=10", kVerMirror, 1},
    {9, kTriggerSetter, 1, "", kExtTrigger, 0, E_NOTIMPL},
    {10, kGainSetter, 127, "write 35=7F", kDigitalGlobalGain, 127},
    {36, kShutterSetter, 32767, "write B=7FFF", kShutter, 32767},
    {36, kHorMirrorSetter, 1, "read D=0; write D=10", kHorMirror, 1},  // its rows are the picture's columns
    {38, kShutterSetter, 0, "write B=0", kShutter, 0},
    {38, kHorMirrorSetter, 1, "", kHorMirror, 0, E_NOTIMPL},
    {63, kShutterSetter, 40000, "write B=7FFF", kShutter, 32767},
    {63, kGainSetter, 5, "write 35=10", kDigitalGlobalGain, 16},
    {63, kVerMirrorSetter, 1, "read D=0; write D=10", kVerMirror, 1},
    {63, kTriggerSetter, 1, "read 20=0; write 20=4; read 7=0; write 7=10; read 47=0; write 47=1", kExtTrigger, 1},

    // 16-bit addresses.
    {32, kShutterSetter, 1000, "write 202=3E8", kShutter, 1000},
    {32, kShutterSetter, 0, "write 202=1", kShutter, 100, E_INVALIDARG},
    {32, kShutterSetter, 0x12345, "write 200=1; write 202=2345", kShutter, 0x12345},
    {32, kGainSetter, 0x1C05, "write 305E=7005", kDigitalGlobalGain, 0x1C05},
    {32, kHorMirrorSetter, 1, "read 3040=0; write 3040=4000", kHorMirror, 1},
    {32, kTriggerSetter, 1, "read 3160=0; write 3160=1", kExtTrigger, 1},
    {32, kLargeFrameSetter, 1, "write 342=1E60", kShutter, 100},
    {32, kPortSetter, 4, "read 3270=0; write 3270=1", kExtTrigger, 0},
    {43, kGainSetter, 100, "write 305E=64", kDigitalGlobalGain, 100},
    {43, kVerMirrorSetter, 1, "read 3040=0; write 3040=8000", kVerMirror, 1},
    {43, kTriggerSetter, 1, "write 3046=0; write 3048=20; write 3162=9F", kExtTrigger, 1},
    {44, kShutterSetter, 0, "write 202=1", kShutter, 1},
    {44, kShutterSetter, 1048576, "write 200=F; write 202=FFFF", kShutter, 1048575},
    {44, kGainSetter, 40000, "write 305E=73FF", kDigitalGlobalGain, 32767},
    {44, kVerMirrorSetter, 1, "read 3040=0; write 3040=8000", kVerMirror, 1},
    {44, kTriggerSetter, 1, "read 3160=0; write 3160=1", kExtTrigger, 1},
    {47, kShutterSetter, 5000, "write 202=42C", kShutter, 1068},
    {47, kGainSetter, 2000, "write 305E=3FF", kDigitalGlobalGain, 1023},
    {47, kHorMirrorSetter, 1, "", kHorMirror, 0, E_NOTIMPL},
    {49, kShutterSetter, 9000, "read 202=3E8; write 202=1FFF", kShutter, 8191},
    {49, kGainSetter, 200, "read 305E=2E; write 305E=7F", kDigitalGlobalGain, 127},
    {49, kHorMirrorSetter, 1, "read 3040=0; write 3040=4000", kHorMirror, 1},
    {50, kShutterSetter, 5000, "write 202=422", kShutter, 1058},
    {51, kShutterSetter, 0xFFFF, "write 202=FFFF", kShutter, 0xFFFF},
    {51, kGainSetter, 8191, "write 305E=1FFF", kDigitalGlobalGain, 8191},
    {51, kTriggerSetter, 1, "", kExtTrigger, 0, E_NOTIMPL},
    {60, kShutterSetter, 9000, "read 3166=0; read 202=64; write 202=2000", kShutter, 8192},
    {60, kGainSetter, 200, "read 305E=E; write 305E=7F", kDigitalGlobalGain, 127},
    {69, kShutterSetter, 9000, "write 202=1FFF", kShutter, 8191},
    {69, kGainSetter, 5, "write 305E=1005", kDigitalGlobalGain, 5},
    {69, kVerMirrorSetter, 1, "read 3040=0; write 3040=8000", kVerMirror, 1},
    {70, kShutterSetter, 8192, "write 3012=2000", kShutter, 8192},
    {70, kGainSetter, 5, "write 305E=1085", kDigitalGlobalGain, 5},
    {70, kTriggerSetter, 1, "write 3046=0; write 3048=20; write 3162=9F", kExtTrigger, 1},
    {71, kShutterSetter, 9000, "write 3012=2000", kShutter, 8192},
    {71, kGainSetter, 14, "write 305E=108E", kDigitalGlobalGain, 14},
    {71, kHalfClockSetter, 1, "write 302=2; write 30A=2", kHalfClock, 1},
    {82, kShutterSetter, 20000, "write 3012=3FFF", kShutter, 16383},
    {82, kGainSetter, 32, "write 305E=130", kDigitalGlobalGain, 32},
    {86, kShutterSetter, 10000, "write 3012=2580", kShutter, 9600},
    {86, kGainSetter, 5, "write 305E=1C", kDigitalGlobalGain, 28},
    {90, kShutterSetter, 20000, "write 3012=3FFF", kShutter, 16383},
    {90, kGainSetter, 200, "write 305E=17F", kDigitalGlobalGain, 127},
    {90, kHorMirrorSetter, 1, "read 3040=0; write 3040=4000", kHorMirror, 1},
    {91, kShutterSetter, 9000, "write 3012=2000", kShutter, 8192},
    {91, kGainSetter, 14, "write 305E=11E", kDigitalGlobalGain, 14},

    // Settings in bytes.
    {68, kShutterSetter, 2000, "write 8=3A; write 9=4", kShutter, 1082},
    {68, kGainSetter, 200, "write 1C=77; write 1D=0; read 1E=0; write 1E=1", kDigitalGlobalGain, 119},
    {68, kVerMirrorSetter, 1, "read 1=0; write 1=1", kVerMirror, 1},
    {68, kTriggerSetter, 1, "read 1E=0; write 1E=80", kExtTrigger, 1},
    {87, kShutterSetter, 0x123, "write 8=23; write 9=1", kShutter, 0x123},
    {87, kShutterSetter, 1281, "write 8=1; write 9=5", kShutter, 1049, E_INVALIDARG},
    {87, kGainSetter, 104, "write 1C=68; write 1D=0; read 1E=0; write 1E=1", kDigitalGlobalGain, 104},
    {87, kVerMirrorSetter, 1, "read 3040=0; write 3040=8000", kVerMirror, 1},
    {87, kTriggerSetter, 1, "read 301A=0; write 301A=100", kExtTrigger, 1},
    {87, kHalfClockSetter, 1, "write 302=2; write 30A=2", kHalfClock, 1},
    {96, kShutterSetter, 5000, "write 20=BE; write 21=3; write 22=0", kShutter, 958},
    {96, kGainSetter, 1000, "write 14=D0; write 15=2", kDigitalGlobalGain, 720},
    {96, kHorMirrorSetter, 1, "read 7=0; write 7=2", kHorMirror, 1},
    {97, kShutterSetter, 9, "write 36=3", kShutter, 3},
    {97, kGainSetter, 64, "write 35=3F", kDigitalGlobalGain, 63},
    {97, kVerMirrorSetter, 1, "read 3820=0; write 3820=2", kVerMirror, 1},
    {97, kHorMirrorSetter, 1, "read 3821=0; write 3821=2", kHorMirror, 1},
};
// clang-format on

}  // namespace

std::span<const Expectation> CmosExpectations() {
  return kCmos;
}

}  // namespace zel::test
