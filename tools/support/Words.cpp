#include "tools/support/Words.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <numeric>

namespace zel::tool {
namespace {

template <class Number, class... Base>
std::optional<Number> ParseWhole(std::string_view text, Base... base) {
  Number value{};
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value, base...);
  if (error != std::errc{} || stop != end) return std::nullopt;
  return value;
}

std::size_t EditDistance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t change = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({change, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row.back();
}

}  // namespace

std::optional<std::int32_t> ParseNumber(std::string_view text) {
  const bool negative = text.starts_with('-');
  std::string_view digits = text.substr(negative ? 1 : 0);
  const bool hexadecimal = digits.starts_with("0x") || digits.starts_with("0X");
  if (hexadecimal) digits.remove_prefix(2);
  // A second sign would otherwise pass.
  if (digits.starts_with('-')) return std::nullopt;
  const auto magnitude = ParseWhole<std::int64_t>(digits, hexadecimal ? 16 : 10);
  if (!magnitude) return std::nullopt;
  const std::int64_t value = negative ? -*magnitude : *magnitude;
  const std::int64_t most = hexadecimal ? std::numeric_limits<std::uint32_t>::max()
                                        : std::int64_t{std::numeric_limits<std::int32_t>::max()};
  if (value < std::numeric_limits<std::int32_t>::min() || value > most) return std::nullopt;
  return static_cast<std::int32_t>(value);
}

std::optional<double> ParseReal(std::string_view text) {
  const auto value = ParseWhole<double>(text);
  return value && std::isfinite(*value) ? value : std::nullopt;
}

std::optional<std::int64_t> ParseDuration(std::string_view text) {
  struct Unit {
    std::string_view name;
    double milliseconds;
  };
  // "ms" before its own endings.
  for (const auto& [name, milliseconds] : {Unit{"ms", 1}, Unit{"s", 1000}, Unit{"m", 60000}}) {
    if (!text.ends_with(name)) continue;
    const auto amount = ParseReal(text.substr(0, text.size() - name.size()));
    // A year is beyond any run and far from overflow.
    if (!amount || *amount * milliseconds < 1 || *amount * milliseconds > 3.2e10) return std::nullopt;
    return std::llround(*amount * milliseconds);
  }
  return std::nullopt;
}

std::vector<std::string_view> Split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  for (;;) {
    const std::size_t at = text.find(separator);
    parts.push_back(text.substr(0, at));
    if (at == std::string_view::npos) return parts;
    text.remove_prefix(at + 1);
  }
}

bool MatchesGlob(std::string_view pattern, std::string_view text) {
  std::size_t p = 0, t = 0;
  std::size_t star = std::string_view::npos, retry = 0;
  while (t < text.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      retry = t;
    } else if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == text[t])) {
      ++p;
      ++t;
    } else if (star != std::string_view::npos) {
      p = star + 1;
      t = ++retry;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', p) == std::string_view::npos;
}

std::string_view Nearest(std::string_view word, const std::vector<std::string_view>& candidates) {
  const std::vector<std::string_view> pieces = Split(word, '-');
  std::string_view best;
  std::size_t bestDistance = std::max<std::size_t>(2, word.size() / 3) + 1;
  for (std::string_view candidate : candidates) {
    // Words of a long name are as good as a typing error.
    const bool part = word.size() >= 3 && std::ranges::all_of(pieces, [&](std::string_view piece) {
                        return candidate.find(piece) != std::string_view::npos;
                      });
    const std::size_t distance = part ? 1 : EditDistance(word, candidate);
    if (distance < bestDistance && distance < candidate.size()) {
      best = candidate;
      bestDistance = distance;
    }
  }
  return best;
}

}  // namespace zel::tool
