#include <QuillbayPlatform/TextEncoding.h>
#include <gtest/gtest.h>

namespace quillbay::platform {
namespace {

using namespace std::string_view_literals;

TEST(TextEncoding, Base64PadsAndBreaksNoLines) {
  EXPECT_EQ(base64Encoded(""), "");
  EXPECT_EQ(base64Encoded("f"), "Zg==");
  EXPECT_EQ(base64Encoded("\xFB\xFF\0"sv), "+/8A");
  EXPECT_EQ(base64Encoded(std::string(3000, '\0')), std::string(4000, 'A'));
}

TEST(TextEncoding, PercentEncodesEveryByteThatIsNotExemptAndDecodesOnlyWholeTriplets) {
  EXPECT_EQ(percentEncoded("a-Z_9~/ \xC3\xA9\0%"sv, "-_~"), "a-Z_9~%2F%20%C3%A9%00%25");
  EXPECT_EQ(percentDecoded("%41%c3%A9%00+"), "A\xC3\xA9\0+"sv);
  EXPECT_EQ(percentDecoded("%4%%zz%2541%4"), "%4%%zz%41%4");
}

}  // namespace
}  // namespace quillbay::platform
