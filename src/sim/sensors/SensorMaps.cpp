#include "sim/sensors/SensorMaps.h"

#include <algorithm>

namespace zel {
namespace {

constexpr const SensorMap* kMaps[] = {
    &kSensorType1, &kSensorType13, &kSensorType67, &kSensorType78, &kSensorType98,
};

}  // namespace

const SensorMap* FindSensorMap(int type) {
  const auto* const found = std::ranges::find(kMaps, type, &SensorMap::type);
  return found == std::end(kMaps) ? nullptr : *found;
}

}  // namespace zel
