#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Reading what a user typed.
namespace zel::tool {

/// A 32-bit number, decimal or with 0x; hexadecimal ones may use all 32 bits. Nothing when it is anything
/// else.
std::optional<std::int32_t> ParseNumber(std::string_view text);

/// A finite decimal number such as "-0.25".
std::optional<double> ParseReal(std::string_view text);

/// "500ms", "10s", "2m", in milliseconds; nothing for anything else, and for zero.
std::optional<std::int64_t> ParseDuration(std::string_view text);

/// Parts between separators, empty ones included.
std::vector<std::string_view> Split(std::string_view text, char separator);

/// `*` stands for any text, `?` for one character.
bool MatchesGlob(std::string_view pattern, std::string_view text);

/// The candidate that a typing error most likely meant; empty when none is near.
std::string_view Nearest(std::string_view word, const std::vector<std::string_view>& candidates);

}  // namespace zel::tool
