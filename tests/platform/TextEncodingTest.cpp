#include <QuillbayPlatform/TextEncoding.h>
#include <gtest/gtest.h>

namespace quillbay::platform {
namespace {

using namespace std::string_view_literals;

TEST(TextEncoding, Base64PadsAndBreaksNoLines) {
  EXPECT_EQ(base64Encoded(""), "");
  EXPECT_EQ(base64Encoded("f"), "Zg==");
  EXPECT_EQ(base64Encoded("fo"), "Zm8=");
  EXPECT_EQ(base64Encoded("foo"), "Zm9v");
  EXPECT_EQ(base64Encoded("\xFB\xFF\0"sv), "+/8A");
  // Longer than the encoder takes at once.
  const std::string zeros(4'000'001, '\0');
  EXPECT_EQ(base64Encoded(zeros), std::string((zeros.size() + 2) / 3 * 4 - 1, 'A') + "=");
}

TEST(TextEncoding, PercentEncodesEveryByteThatIsNotExempt) {
  EXPECT_EQ(percentEncoded("a-Z_9~/ \xC3\xA9\0%"sv, "-_~"), "a-Z_9~%2F%20%C3%A9%00%25");
}

TEST(TextEncoding, PercentDecodesOnlyWholeTriplets) {
  EXPECT_EQ(percentDecoded("%41%c3%A9%00+"), "A\xC3\xA9\0+"sv);
  EXPECT_EQ(percentDecoded("%4%%zz%2541%4"), "%4%%zz%41%4");
}

}  // namespace
}  // namespace quillbay::platform
