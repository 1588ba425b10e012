#include "hosts/cli/FileList.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "TemporaryFolder.h"

namespace quillbay::cli {
namespace {

using Texts = std::vector<std::string>;

TEST(FileList, namesEachFileThatCannotBeSharedAndWhy) {
  const test::TemporaryFolder folder;
  const std::string good = folder.write("good", "12345");
  const std::string missing = folder / "missing";
  const std::string pipe = folder / "pipe";
  const std::string badName = folder.write("bad\xff", "");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);

  FileList files({good, missing, folder.path(), pipe, badName, "/dev/null"});
  const Texts problems = files.findProblems();
  ASSERT_EQ(problems.size(), 5U);
  EXPECT_EQ(problems[0], "'" + missing + "': No such file or directory");
  EXPECT_NE(problems[1].find("is a folder"), std::string::npos);
  EXPECT_NE(problems[2].find("is a pipe"), std::string::npos);
  EXPECT_NE(problems[3].find("bad\\xff': the name is not UTF-8"), std::string::npos);
  EXPECT_NE(problems[4].find("is a device"), std::string::npos);
  EXPECT_EQ(files.totalByteCount(), 5U);
}

TEST(FileList, anotherLookTellsOnlyWhatIsNew) {
  const test::TemporaryFolder folder;
  const std::string vanishing = folder.write("vanishing", "1");
  FileList files({vanishing, folder / "missing"});
  EXPECT_EQ(files.findProblems().size(), 1U);
  std::filesystem::remove(vanishing);
  EXPECT_EQ(files.findProblems(), (Texts{"'" + vanishing + "': No such file or directory"}));
}

TEST(FileList, aPathThatStandsTwiceIsAProblemAndAFileUnderTwoPathsIsNot) {
  const test::TemporaryFolder folder;
  const std::string file = folder.write("file", "1");
  const std::string link = folder / "link";
  std::filesystem::create_symlink(file, link);
  FileList files({file, link, file});
  EXPECT_EQ(files.findProblems(),
            (Texts{"'" + file + "' stands 2 times in the list; name each file once"}));
  EXPECT_EQ(files.aliases(),
            (Texts{"'" + file + "' and '" + link + "' are the same file; it is uploaded 2 times"}));
}

}  // namespace
}  // namespace quillbay::cli
