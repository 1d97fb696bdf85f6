#include "models/ModelExpectations.h"
#include "property/CZELDevicePropertyImpl.h"

namespace zel::test {
namespace {

constexpr Setter kStrobeSetter = &CZELDeviceProperty::SetStrobe;

// clang-format off
constexpr Expectation kSata[] = {
    {0, kGainSetter, 1, "", kDigitalGlobalGain, 0, E_NOTIMPL},
    {0, kTriggerSetter, 1, "", kExtTrigger, 1},

    {1, kGainSetter, 7, "write AF=0; write 35=7", kDigitalGlobalGain, 7},
    {1, kShutterSetter, 6401, "write AF=0; write 9=12C", kShutter, 300, E_INVALIDARG},

    {2, kGainSetter, 63, "write AF=0; write 35=3F", kDigitalGlobalGain, 63},
    {2, kGainSetter, 0, "write 35=3C", kDigitalGlobalGain, 60, E_INVALIDARG},
    {2, kShutterSetter, 600, "read 8=0; read 9=12C; write AF=0; write 9=258", kShutter, 600},
    {2, kHorMirrorSetter, 1, "read 20=0; write 20=4000; read 20=4000", kHorMirror, 1},
    {2, kStrobeSetter, 1, "", kStrobe, 0, E_NOTIMPL},

    {3, kGainSetter, 1, "write AF=0; write 35=1", kDigitalGlobalGain, 1},
    {3, kShutterSetter, 6400, "write AF=0; write B=1900", kShutter, 6400},
    {3, kShutterSetter, 0, "write B=12C", kShutter, 300, E_INVALIDARG},
    {3, kHorMirrorSetter, 1, "read D=0; write D=20; read D=20", kHorMirror, 1},
    {3, kVerMirrorSetter, 1, "read D=0; write D=10; read D=10", kVerMirror, 1},

    {4, kGainSetter, 1, "", kDigitalGlobalGain, 0, E_NOTIMPL},
    {4, kShutterSetter, 600, "write 1=C; write 2=14; write 3=3FF; write 4=4FF; write 9=258", kShutter, 600},
    {4, kVerMirrorSetter, 1, "", kVerMirror, 0, E_NOTIMPL},

    {5, kGainSetter, 63, "write 16=0; write 17=3F", kDigitalGlobalGain, 63},
    {5, kShutterSetter, 6400, "write 26=C; write 27=BF; write 10=19; write 11=0", kShutter, 6400},

    {6, kGainSetter, 1023, "write 6=3F; write 7=F", kDigitalGlobalGain, 1023},
    {6, kShutterSetter, 1068, "write 9E=2C; write 9F=10", kShutter, 1068},
    {6, kShutterSetter, 7, "write 9E=8; write 9F=0", kShutter, 8, E_INVALIDARG},

    {7, kGainSetter, 1600, "write 35=640", kDigitalGlobalGain, 1600},
    {7, kShutterSetter, 1800, "write 9=708", kShutter, 1800},
    {7, kTriggerSetter, 1, "read 1E=0; write 1E=100", kExtTrigger, 1},

    {8, kGainSetter, 1023, "write 4=3FF", kDigitalGlobalGain, 1023},
    {8, kShutterSetter, 2079, "write 9A=80281F", kShutter, 2079},
    {8, kShutterSetter, 2080, "write 9A=802064", kShutter, 100, E_INVALIDARG},
    {8, kTriggerSetter, 1, "read 20=0; write 20=1; write 21=0", kExtTrigger, 1},

    {35, kGainSetter, 127, "write 35=7F", kDigitalGlobalGain, 127},
    {35, kShutterSetter, 16383, "write 3=437; write 4=59F; write 9=3FFF", kShutter, 16383},
    {35, kVerMirrorSetter, 1, "read 20=0; write 20=8000", kVerMirror, 1},
    {35, kHorMirrorSetter, 1, "", kHorMirror, 1},

    {39, kShutterSetter, 1, "", kShutter, 0, E_NOTIMPL},
};
// clang-format on

}  // namespace

std::span<const Expectation> SataExpectations() {
  return kSata;
}

}  // namespace zel::test
