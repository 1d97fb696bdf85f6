#include "sim/sensors/SensorMaps.h"

namespace zel {

std::span<const SensorMap> OtherSensors() {
  return {};
}

}  // namespace zel
