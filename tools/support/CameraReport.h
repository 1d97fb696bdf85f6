#pragma once

#include <vector>

#include "tools/support/Camera.h"
#include "tools/support/Output.h"
#include "tools/support/PropertySettings.h"

namespace zel::tool {

/// Which camera it is: camera ("13@0"), type, index, class, name, family.
Json CameraJson(CameraId id);

/// Reads properties and prints them, as a table or as one object with `camera` and `properties`. Kept
/// readings that failed are warned of; returns the exit code that they lead to.
ExitCode ReportProperties(Camera& camera, const std::vector<const PropertyName*>& properties,
                          const Globals& globals, Json json);

}  // namespace zel::tool
