#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/support/Camera.h"
#include "tools/support/PropertyNames.h"

namespace zel::tool {

/// One NAME=VALUE of the command line.
struct PropertySetting {
  const PropertyName* property;
  LONG value;
};

/// What a camera has for one name. Range and default are empty where the setting has none.
struct PropertyState {
  std::optional<LONG> minimum, maximum, defaultValue;
  std::optional<LONG> current;  ///< empty when it can't be read
  bool supported = false;
  HRESULT result = S_OK;  ///< of the read
};

/// Throws a usage error for an unknown name, a name that can't be set, or a value that is no 32-bit number.
PropertySetting ParseSetting(const std::string& text);
std::vector<PropertySetting> ParseSettings(const std::vector<std::string>& texts);

PropertyState ReadProperty(Camera& camera, const PropertyName& property);

/// Checks all of them first (usage error with the name, the value and the range), then applies all of them.
/// Edges of the window are applied together. Throws when the camera refuses one nevertheless.
void ApplySettings(Camera& camera, const std::vector<PropertySetting>& settings);

}  // namespace zel::tool
