#include <fcntl.h>
#include <sys/stat.h>

#include "ProgramTest.h"

namespace quillbay::test {
namespace {

namespace fs = std::filesystem;

class FileInput : public ProgramTest {
 protected:
  FileInput() {
    for (const char* name : {"docs", "archives"}) fs::create_directory(folder_ / name);
  }
  /// Of the files of the newest session.
  std::vector<std::string> sentNames() const {
    const json session = sentSession();
    std::vector<std::string> names;
    for (const auto& item : session.at("items")) names.push_back(item.at("file_name"));
    return names;
  }
  void expectNothingLeft() const { EXPECT_TRUE(fs::is_empty(folder_ / "archives")); }

  const std::string packing_ = "TMPDIR=\"$PWD/archives\" quillbay share --zip docs file";
};

TEST_F(FileInput, aListNamesFurtherFiles) {
  const std::string odd = folder_.write("two\nlines", "x");
  const std::string last = folder_.write(" blank ", "y");
  folder_.write("list", odd + '\0' + '\0' + last);
  run(0, "quillbay share --files-from list --null file");
  EXPECT_THAT(sentNames(), ElementsAre("file", "two\nlines", " blank "));
  run(0, "quillbay share --files-from=-", "\n" + last + "\n" + file_);
  EXPECT_THAT(sentNames(), ElementsAre(" blank ", "file"));
}

TEST_F(FileInput, aListThatCannotBeUsedIsAUsageError) {
  const std::tuple<std::string, std::string, const char*> rows[] = {
      {"-", "\n\n", "list of files in standard input names no file"},
      {"-", std::string("a\0b", 3), "holds a NUL byte; add --null"},
      {"missing", "", "'missing': No such file"},
      {".", "", "'.': Is a directory"}};
  for (const auto& [list, input, message] : rows) {
    const auto program = run(2, "quillbay share file --files-from " + list, input);
    EXPECT_THAT(program->error(), HasSubstr(message));
  }
  ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  const auto waiting = start("quillbay share --files-from pipe");
  host::FileDescriptor writer;
  ASSERT_TRUE(waiting->waitUntil([&] {
    writer =
        host::FileDescriptor(::open((folder_ / "pipe").c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
    return writer.isOpen();
  }));
  interrupt(*waiting);
  EXPECT_TRUE(service_.calls().empty());
}

TEST_F(FileInput, aFolderIsPackedAndItsArchiveGoesAwayAtTheEnd) {
  folder_.write("docs/letter", "Dear reader");
  fs::create_symlink("letter", folder_ / "docs/link");
  EXPECT_THAT(run(0, packing_)->error(), HasSubstr("docs/link' is a symbolic link"));
  EXPECT_THAT(sentNames(), ElementsAre("docs.zip", "file"));
  EXPECT_THAT(service_.storedBytes("item-1"), StartsWith("PK"));
  expectNothingLeft();

  // It could not be continued without its archive.
  service_.answer(Call::store, FakeService::storeRefusal());
  run(1, packing_ + " 2>/dev/tty");
  EXPECT_EQ(count(Call::deleteSession), 1U);
  expectNothingLeft();

  fs::create_directory(folder_ / "docs/bad\xff");
  EXPECT_THAT(run(2, packing_)->error(), HasSubstr("nothing was shared"));
  expectNothingLeft();
}

TEST_F(FileInput, CtrlCRemovesArchivesAtAnyTimeAndASecondOneEndsTheWaitForTheService) {
  folder_.writeSparse("docs/large", 256 * 1024 * 1024);
  const auto program = start(packing_ + " 2>/dev/tty");
  ASSERT_TRUE(program->waitToShow("Packing '"));
  interrupt(*program);
  expectNothingLeft();
  EXPECT_TRUE(service_.calls().empty());

  fs::remove(folder_ / "docs/large");
  stall(Call::store);
  for (const bool isDeleting : {false, true}) {
    const auto uploading = startUntil(Call::store, packing_);
    EXPECT_FALSE(fs::is_empty(folder_ / "archives"));
    if (isDeleting) {
      stall(Call::deleteSession);
      uploading->signal(SIGINT);
      ASSERT_TRUE(uploading->waitUntil([&] { return count(Call::deleteSession) == 2; }));
    }
    interrupt(*uploading);
    // A second signal ends the program at once: the bounded wait for the deletion tells more.
    EXPECT_EQ(uploading->error(), "");
    expectNothingLeft();
  }
}

}  // namespace
}  // namespace quillbay::test
