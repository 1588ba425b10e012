#include "hosts/cli/FileProblems.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "TemporaryFolder.h"

namespace quillbay::cli {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(FileProblems, namesEachFileThatCannotBeSharedAndWhy) {
  const test::TemporaryFolder folder;
  const std::string good = folder.write("good", "12345");
  const std::string missing = folder / "missing";
  const std::string pipe = folder / "pipe";
  const std::string badName = folder.write("bad\xff", "");
  const std::string link = folder / "link";
  std::filesystem::create_symlink(good, link);
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);

  const host::SharedFiles files(
      {good, missing, folder.path(), pipe, badName, "/dev/null", "/proc/version", link, good});
  EXPECT_THAT(
      fileProblems(files),
      ElementsAre("'" + good + "' is in the list 2 times; name each file once",
                  "'" + missing + "': No such file or directory", HasSubstr("is a folder; --zip"),
                  HasSubstr("is a pipe"), HasSubstr("bad\\xff': the name is not UTF-8"),
                  HasSubstr("is a device"), HasSubstr("no size")));
  EXPECT_EQ(files.totalByteCount(), 15U);
  EXPECT_THAT(fileAliases(files), ElementsAre("'" + good + "' and '" + link +
                                              "' are the same file; it is uploaded 2 times"));
}

}  // namespace
}  // namespace quillbay::cli
