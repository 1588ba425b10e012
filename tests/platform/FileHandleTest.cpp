#include <QuillbayPlatform/FileHandle.h>
#include <gtest/gtest.h>

namespace quillbay::platform {
namespace {

TEST(FileHandle, NamesTheFileAndTheReasonOfARefusalInOneLineWithoutItsQuery) {
  const std::pair<const char*, const char*> cases[] = {
      {"file:///missing", "Cannot open /missing: No such file or directory"},
      {"file:///dev/null", "Cannot open /dev/null: not a regular file"},
      // To the system, such a path ends at the NUL.
      {"file:///etc/passwd%00.txt", "Cannot open /etc/passwd .txt: Invalid argument"},
      {"file:///a%0Ab%E2%80%AEtxt.%FF", "Cannot open /a b txt.\uFFFD: No such file or directory"},
      {"https://a.example/b?secret", "Cannot open https://a.example/b: not a local file"},
  };
  for (const auto& [address, description] : cases) {
    const auto file = FileHandle::openForReading(URL::parse(address).value());
    ASSERT_FALSE(file) << address;
    EXPECT_EQ(file.error()->description(), description);
  }
}

}  // namespace
}  // namespace quillbay::platform
