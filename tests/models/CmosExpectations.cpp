#include "models/ModelExpectations.h"
#include "property/CZELDevicePropertyImpl.h"

namespace zel::test {
namespace {

// clang-format off
constexpr Expectation kCmos[] = {
    {13, kGainSetter, 200, "write 35=48", kDigitalGlobalGain, 14, E_INVALIDARG},
    {67, kShutterSetter, 40000, "write 9=7FFF", kShutter, 32767},
    {98, kShutterSetter, 0x12345, "write 9=3FFF; write 8=0", kShutter, 0x3FFF},
};
// clang-format on

}  // namespace

std::span<const Expectation> CmosExpectations() {
  return kCmos;
}

}  // namespace zel::test
