#include "sim/sensors/SensorMaps.h"

namespace zel {

std::span<const SensorMap> Map3040Sensors() {
  return {};
}

}  // namespace zel
