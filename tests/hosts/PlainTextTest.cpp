#include "hosts/common/PlainText.h"

#include <gtest/gtest.h>

namespace quillbay::host {
namespace {

TEST(PlainText, textsOfServersCannotDriveATerminal) {
  EXPECT_EQ(plainLine("\x1b]0;owned\x07red\x1b[31m"), "]0;ownedred[31m");
  EXPECT_EQ(plainLine("c1\xc2\x9b"
                      "2J"),
            "c12J");
  EXPECT_EQ(plainLine("a\r\n\tb\n"), "a b");
  const std::string rightToLeft = {'\xe2', '\x80', '\xae'};
  EXPECT_EQ(plainLine("gpj." + rightToLeft + "exe"), "gpj.exe");
  EXPECT_EQ(plainLine("bad\xff\xc3"), "bad\uFFFD\uFFFD");
  EXPECT_EQ(plainLine("Größe 👍"), "Größe 👍");
  EXPECT_EQ(plainLine(std::string(600, 'x')).size(), 503U);
}

TEST(PlainText, namesShowEveryByteThatTellsThemApart) {
  EXPECT_EQ(inQuotes("a b\n\x1b\xff"), "'a b\\x0a\\x1b\\xff'");
  EXPECT_EQ(inQuotes("Größe"), "'Größe'");
  EXPECT_EQ(inQuotes("\u202Egpj.exe"), "'\\xe2\\x80\\xaegpj.exe'");
}

TEST(PlainText, aFamilyIsOneCharacterAndALetterWithItsAccentToo) {
  EXPECT_EQ(characterCount("👨‍👩‍👧‍👦e\u0301\r\n🇩🇪"), 4U);
  EXPECT_EQ(characterCount(""), 0U);
  EXPECT_EQ(characterCount("a\xff"), std::nullopt);
}

TEST(PlainText, sizesAndTimesReadWell) {
  EXPECT_EQ(byteCountText(1), "1 byte");
  EXPECT_EQ(byteCountText(999), "999 bytes");
  EXPECT_EQ(byteCountText(1234), "1.2 kB");
  EXPECT_EQ(byteCountText(9'960), "10.0 kB");
  EXPECT_EQ(byteCountText(999'950), "1.0 MB");
  EXPECT_EQ(byteCountText(314'572'800), "314.6 MB");
  EXPECT_EQ(durationText(std::chrono::seconds(7)), "0:07");
  EXPECT_EQ(durationText(std::chrono::seconds(3723)), "1:02:03");
}

}  // namespace
}  // namespace quillbay::host
