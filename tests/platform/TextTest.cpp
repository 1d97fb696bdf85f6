#include "platform/Text.h"

#include <gtest/gtest.h>

namespace zel {
namespace {

using namespace std::string_view_literals;

struct Case {
  std::string_view utf8;
  std::u16string_view utf16;
};

TEST(Text, WellFormedTextGoesBothWays) {
  for (const auto& [utf8, utf16] : {
           Case{"", u""},
           Case{"a\0b"sv, u"a\0b"sv},
           // The limits of each length.
           Case{"\x7F\xC2\x80\xDF\xBF", u"\x7F\x80\x7FF"},
           Case{"\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF", u"\x800\xD7FF\xE000\xFFFF"},
           Case{"\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", u"\U00010000\U0010FFFF"},
       }) {
    EXPECT_EQ(ToUtf16(utf8), utf16);
    EXPECT_EQ(ToUtf8(utf16), utf8);
  }
}

TEST(Text, EachIllFormedPieceBecomesOneReplacement) {
  for (const auto& [utf8, utf16] : {
           Case{"\x80x", u"\xFFFDx"},                              // nothing to continue
           Case{"\xC3", u"\xFFFD"},                                // cut off
           Case{"\xE2\x82", u"\xFFFD"},                            // cut off later: still one piece
           Case{"\xE2\x82x", u"\xFFFDx"},                          // the next character survives
           Case{"\xC0\xAF", u"\xFFFD\xFFFD"},                      // longer than needed
           Case{"\xE0\x9F\xBF", u"\xFFFD\xFFFD\xFFFD"},            // longer than needed
           Case{"\xED\xA0\x80", u"\xFFFD\xFFFD\xFFFD"},            // a surrogate
           Case{"\xF4\x90\x80\x80", u"\xFFFD\xFFFD\xFFFD\xFFFD"},  // above the last code point
       }) {
    EXPECT_EQ(ToUtf16(utf8), utf16);
  }
  const char16_t high = 0xD83D, low = 0xDE00;
  EXPECT_EQ(ToUtf8(std::u16string{low, high}), "\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(ToUtf8(std::u16string{high, high, low, u'x'}), "\xEF\xBF\xBD\xF0\x9F\x98\x80x");
}

}  // namespace
}  // namespace zel
