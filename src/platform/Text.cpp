#include "platform/Text.h"

#include <cstddef>
#include <cstdint>

namespace zel {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

constexpr bool IsHighSurrogate(char32_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}
constexpr bool IsLowSurrogate(char32_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

char32_t NextCodePoint(std::u16string_view text, std::size_t* at) {
  const char32_t first = text[(*at)++];
  if (IsHighSurrogate(first) && *at < text.size() && IsLowSurrogate(text[*at])) {
    return 0x10000 + ((first - 0xD800) << 10) + (text[(*at)++] - 0xDC00u);
  }
  return IsHighSurrogate(first) || IsLowSurrogate(first) ? kReplacement : first;
}

char32_t NextCodePoint(std::string_view text, std::size_t* at) {
  const auto first = static_cast<std::uint8_t>(text[(*at)++]);
  if (first < 0x80) return first;
  if (first < 0xC2 || first > 0xF4) return kReplacement;
  const unsigned more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : 1;
  char32_t point = first & (0x3Fu >> more);
  // The first byte after these narrows what is shortest form, no surrogate and at most U+10FFFF.
  std::uint8_t low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
  std::uint8_t high = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
  for (unsigned n = 0; n < more; ++n) {
    if (*at == text.size()) return kReplacement;
    const auto next = static_cast<std::uint8_t>(text[*at]);
    if (next < low || next > high) return kReplacement;
    point = point << 6 | (next & 0x3Fu);
    low = 0x80;
    high = 0xBF;
    ++*at;
  }
  return point;
}

}  // namespace

std::string ToUtf8(std::u16string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const char32_t point = NextCodePoint(text, &at);
    if (point < 0x80) {
      out += static_cast<char>(point);
      continue;
    }
    const unsigned more = point >= 0x10000 ? 3 : point >= 0x800 ? 2 : 1;
    out += static_cast<char>((0xFF00u >> (more + 1) & 0xFF) | point >> (6 * more));
    for (unsigned n = more; n-- > 0;) out += static_cast<char>(0x80 | (point >> (6 * n) & 0x3F));
  }
  return out;
}

std::u16string ToUtf16(std::string_view text) {
  std::u16string out;
  out.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const char32_t point = NextCodePoint(text, &at);
    if (point < 0x10000) {
      out += static_cast<char16_t>(point);
    } else {
      out += static_cast<char16_t>(0xD7C0 + (point >> 10));
      out += static_cast<char16_t>(0xDC00 + (point & 0x3FF));
    }
  }
  return out;
}

}  // namespace zel
