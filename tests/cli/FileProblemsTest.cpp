#include "hosts/cli/FileProblems.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "TemporaryFolder.h"

namespace quillbay::cli {
namespace {

using Texts = std::vector<std::string>;

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
  const Texts problems = fileProblems(files);
  ASSERT_EQ(problems.size(), 7U);
  EXPECT_EQ(problems[0], "'" + good + "' stands 2 times in the list; name each file once");
  EXPECT_EQ(problems[1], "'" + missing + "': No such file or directory");
  EXPECT_TRUE(problems[2].contains("is a folder; --zip"));
  EXPECT_TRUE(problems[3].contains("is a pipe"));
  EXPECT_TRUE(problems[4].contains("bad\\xff': the name is not UTF-8"));
  EXPECT_TRUE(problems[5].contains("is a device"));
  EXPECT_TRUE(problems[6].contains("no size"));
  EXPECT_EQ(files.totalByteCount(), 15U);
  EXPECT_EQ(fileAliases(files),
            (Texts{"'" + good + "' and '" + link + "' are the same file; it is uploaded 2 times"}));
}

TEST(SharedFiles, tellsWhatBecameOfTheFileThatIsBeingUploaded) {
  using host::FileChange;
  const test::TemporaryFolder folder;
  const std::string file = folder / "file";
  cloud::SessionActivity activity;
  activity.file = {.index = 2, .url = platform::URL::fileURL(file)};
  const struct {
    FileChange change;
    std::function<void()> act;
  } rows[] = {
      {FileChange::none, [] {}},
      {FileChange::grew, [&] { folder.write("file", "123456"); }},
      {FileChange::shrank, [&] { folder.write("file", ""); }},
      {FileChange::overwritten, [&] { folder.write("file", "54321"); }},
      {FileChange::vanished, [&] { std::filesystem::remove(file); }},
  };
  for (const auto& row : rows) {
    folder.write("file", "12345");
    std::filesystem::last_write_time(file, std::filesystem::file_time_type());
    const host::SharedFiles files({folder / "a", folder / "b", file, folder / "done"});
    row.act();
    EXPECT_EQ(files.suspect(activity)->index, 2U);
    EXPECT_EQ(files.suspect(activity)->change, row.change);
  }
}

}  // namespace
}  // namespace quillbay::cli
