#include "sim/sensors/SensorMaps.h"

#include <algorithm>

namespace zel {

const SensorMap* FindSensorMap(int type) {
  for (const auto& maps : {Map16Sensors(), Map3040Sensors(), WideVgaSensors(), ByteSensors(), CcdSensors(),
                           SataSensors(), OtherSensors()}) {
    const auto found = std::ranges::find(maps, type, &SensorMap::type);
    if (found != maps.end()) return &*found;
  }
  return nullptr;
}

}  // namespace zel
