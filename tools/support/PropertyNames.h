#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "property/CZELDeviceProperty.h"

namespace zel::tool {

constexpr LONG kNoRecord = -1;

/// One setting under the name that every verb uses: the property method's name in lower case with hyphens.
struct PropertyName {
  using Setter = HRESULT (*)(CZELDeviceProperty&, LONG);
  using Getter = HRESULT (*)(CZELDeviceProperty&, LONG*);

  std::string_view name;
  LONG id;     ///< number of its record, or `kNoRecord`
  Setter set;  ///< null: can only be read
  Getter get;  ///< null: can only be set
  const char* unit;
  const char* text;
  // Range of a setting without a record; empty (minimum above maximum) when every value goes.
  LONG minimum = 1;
  LONG maximum = 0;

  bool HasOwnRange() const { return minimum <= maximum; }
};

std::span<const PropertyName> PropertyNames();

/// The setting of this name; a usage error offering the nearest name when there is none.
const PropertyName& FindProperty(std::string_view name);

/// All settings whose name matches any of the patterns, in the table's order; all of them without a pattern.
/// A pattern that matches nothing is a usage error.
std::vector<const PropertyName*> MatchProperties(const std::vector<std::string>& patterns);

}  // namespace zel::tool
