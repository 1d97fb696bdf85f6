#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/support/Globals.h"

/// Results go to standard output, everything else to standard error.
namespace zel::tool {

/// Members keep the order in which they are set.
using Json = nlohmann::ordered_json;

/// One line, written at once, so that a reader at the other end of a pipe has it now.
void PrintLine(std::string_view line);
/// One value on one line.
void PrintJson(const Json& value);

/// An array with each element on a line of its own.
void PrintJsonArray(const std::vector<Json>& elements);

/// Columns as wide as they need to be, the first row as heading. Numbers are aligned to the right.
void PrintTable(const std::vector<std::vector<std::string>>& rows);

void PrintWarning(const Globals& globals, std::string_view text);

template <class Value>
Json JsonOrNull(const std::optional<Value>& value) {
  return value ? Json(*value) : Json(nullptr);
}

/// The number, or "-".
template <class Value>
std::string TextOrDash(const std::optional<Value>& value) {
  return value ? std::to_string(*value) : "-";
}

/// "0x80004005"
std::string ResultText(std::int32_t result);

}  // namespace zel::tool
