#include "models/ModelExpectations.h"
#include "property/CZELDevicePropertyImpl.h"

namespace zel::test {
namespace {

// clang-format off
constexpr Expectation kSata[] = {
    {1, kGainSetter, 7, "write AF=0; write 35=7", kDigitalGlobalGain, 7},
};
// clang-format on

}  // namespace

std::span<const Expectation> SataExpectations() {
  return kSata;
}

}  // namespace zel::test
