#include "models/ModelExpectations.h"
#include "property/CZELDevicePropertyImpl.h"

namespace zel::test {
namespace {

// clang-format off
constexpr Expectation kCcd[] = {
    {78, kGainSetter, 5000, "write 3003=1; write 5=3FF", kDigitalGlobalGain, 1023},
};
// clang-format on

}  // namespace

std::span<const Expectation> CcdExpectations() {
  return kCcd;
}

}  // namespace zel::test
