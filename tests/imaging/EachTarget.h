#pragma once

#include <gtest/gtest.h>
#include <hwy/highway.h>

#include <cstdint>
#include <string>
#include <vector>

namespace zel {

/// The instruction sets that kernels are compiled for and this processor has.
inline std::vector<std::int64_t> Targets() {
  std::vector<std::int64_t> targets;
  for (std::int64_t all = hwy::SupportedTargets() & HWY_TARGETS; all != 0; all &= all - 1) {
    targets.push_back(all & -all);
  }
  return targets;
}

/// Tests of kernels run once for each of them.
class EachTarget : public testing::TestWithParam<std::int64_t> {
 protected:
  EachTarget() { Use(GetParam()); }
  ~EachTarget() override { Use(0); }

 private:
  static void Use(std::int64_t target) {
    hwy::SetSupportedTargetsForTest(target);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
  }
};

inline std::string TargetName(const testing::TestParamInfo<std::int64_t>& info) {
  return hwy::TargetName(info.param);
}

#define FOR_EACH_TARGET(Suite) \
  INSTANTIATE_TEST_SUITE_P(Targets, Suite, testing::ValuesIn(Targets()), TargetName)

}  // namespace zel
