#include <QuillbayPlatform/SingleLine.h>
#include <gtest/gtest.h>

namespace quillbay::platform {
namespace {

TEST(SingleLine, KeepsTextAndTakesOutWhatBreaksSteersOrReordersALine) {
  const std::tuple<const char*, std::string_view, const char*> cases[] = {
      {"text of any script", "a~\u00A0\u00E9\u05D0\u200D\u2030\uFFFD\U0001F600",
       "a~\u00A0\u00E9\u05D0\u200D\u2030\uFFFD\U0001F600"},
      {"line breaks", "a\r\nb\u0085c\u2028d\u2029e", "a  b c d e"},
      {"terminal sequences", "a\x1B[2J\x7F\u009B2J", "a [2J  2J"},
      {"NUL", std::string_view("a\0b", 3), "a b"},
      {"bidi marks", "\u061C\u200E\u200F|\u202A\u202E|\u2066\u2069", "   |  |  "},
      {"no UTF-8", "\xFF|\xC3|\xC0\x80|\x9B|\xED\xA0\x80|\xF0\x9F\x98",
       "\uFFFD|\uFFFD|\uFFFD\uFFFD|\uFFFD|\uFFFD\uFFFD\uFFFD|\uFFFD\uFFFD\uFFFD"},
  };
  for (const auto& [name, text, line] : cases) EXPECT_EQ(singleLine(text), line) << name;
}

}  // namespace
}  // namespace quillbay::platform
