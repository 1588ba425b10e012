#include <QuillbayPlatform/SHA256.h>
#include <gtest/gtest.h>

namespace quillbay::platform {
namespace {

TEST(SHA256, GivesTheStandardsDigestHoweverTheBytesAreCutAndStartsAnew) {
  const std::string text = "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq";
  const auto bytes = std::as_bytes(std::span(text));
  SHA256 hash;
  for (const std::size_t cut : {0U, 1U, 55U}) {
    hash.update(bytes.first(cut));
    hash.update(bytes.subspan(cut));
    EXPECT_EQ(lowercaseHexadecimal(hash.finalize()),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
  }
  EXPECT_EQ(lowercaseHexadecimal(hash.finalize()),
            "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

}  // namespace
}  // namespace quillbay::platform
