#pragma once

#include <string>
#include <string_view>

/// Text between the two encodings in use: UTF-16 in the component and driver interfaces, UTF-8 in files and
/// on the terminal. Nothing is refused: each ill-formed piece becomes one U+FFFD.
namespace zel {

std::string ToUtf8(std::u16string_view text);
std::u16string ToUtf16(std::string_view text);

}  // namespace zel
