#include "hosts/cli/FileList.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "TemporaryFolder.h"

namespace quillbay::cli {
namespace {

using Texts = std::vector<std::string>;

TEST(FileList, namesEachFileThatCannotBeSharedAndWhyOnce) {
  const test::TemporaryFolder folder;
  const std::string vanishing = folder.write("good", "12345");
  const std::string missing = folder / "missing";
  const std::string pipe = folder / "pipe";
  const std::string badName = folder.write("bad\xff", "");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);

  FileList files({vanishing, missing, folder.path(), pipe, badName, "/dev/null"});
  const Texts problems = files.findProblems();
  ASSERT_EQ(problems.size(), 5U);
  EXPECT_EQ(problems[0], "'" + missing + "': No such file or directory");
  EXPECT_TRUE(problems[1].contains("is a folder"));
  EXPECT_TRUE(problems[2].contains("is a pipe"));
  EXPECT_TRUE(problems[3].contains("bad\\xff': the name is not UTF-8"));
  EXPECT_TRUE(problems[4].contains("is a device"));
  EXPECT_EQ(files.totalByteCount(), 5U);

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
