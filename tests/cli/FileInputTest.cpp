#include <fcntl.h>
#include <sys/stat.h>

#include <filesystem>

#include "ProgramTest.h"

namespace quillbay::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class FileInput : public ProgramTest {
 protected:
  /// Of the files of the newest session.
  std::vector<std::string> sentNames() const {
    const auto body = nlohmann::json::parse(service_.requests(Call::createSession).back().body);
    std::vector<std::string> names;
    for (const auto& item : body.at("items")) names.push_back(item.at("file_name"));
    return names;
  }
  Setup packing(Stream error = Stream::file) const {
    return {.arguments = {"share", "--zip", (folder_ / "docs").string(), file_},
            .environment = {"TMPDIR=" + temporary_.path().string()},
            .error = error};
  }
  void expectNothingLeft() const { EXPECT_TRUE(fs::is_empty(temporary_.path())); }

  const bool hasFolder_ = fs::create_directory(folder_ / "docs");
  const TemporaryFolder temporary_;
};

TEST_F(FileInput, aListNamesFurtherFiles) {
  const std::string odd = folder_.write("two\nlines", "x");
  const std::string last = folder_.write(" blank ", "y");
  const std::string list = folder_.write("list", odd + '\0' + '\0' + last);
  run(0, {.arguments = {"share", "--files-from", list, "--null", file_}});
  EXPECT_THAT(sentNames(), ElementsAre("file", "two\nlines", " blank "));
  run(0, {.arguments = {"share", "--files-from=-"}, .input = "\n" + last + "\n" + file_});
  EXPECT_THAT(sentNames(), ElementsAre(" blank ", "file"));
}

TEST_F(FileInput, aListThatCannotBeUsedIsAUsageError) {
  const struct {
    std::string list;
    std::string input;
    const char* message;
  } rows[] = {{"-", "\n\n", "list of files in standard input names no file"},
              {"-", std::string("a\0b", 3), "holds a NUL byte; add --null"},
              {folder_ / "missing", "", "/missing': No such file"},
              {folder_.path(), "", "': Is a directory"}};
  for (const auto& row : rows) {
    const auto program =
        run(2, {.arguments = {"share", file_, "--files-from", row.list}, .input = row.input});
    EXPECT_THAT(program->error(), HasSubstr(row.message));
  }
  const std::string pipe = folder_ / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const auto waiting = start({.arguments = {"share", "--files-from", pipe}});
  FileDescriptor writer;
  ASSERT_TRUE(waiting->waitUntil([&] {
    writer = FileDescriptor(::open(pipe.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
    return writer.get() >= 0;
  }));
  interrupt(*waiting);
  EXPECT_TRUE(service_.calls().empty());
}

TEST_F(FileInput, aFolderIsPackedAndItsArchiveGoesAwayAtTheEnd) {
  folder_.write("docs/letter", "Dear reader");
  fs::create_symlink("letter", folder_ / "docs/link");
  const auto program = run(0, packing());
  EXPECT_THAT(sentNames(), ElementsAre("docs.zip", "file"));
  EXPECT_THAT(service_.storedBytes("item-1"), StartsWith("PK"));
  EXPECT_THAT(program->error(), HasSubstr("docs/link' is a symbolic link"));
  expectNothingLeft();

  // It could not be continued without its archive.
  service_.setHook(Call::store, [](const Request&, const Reply&) {
    return Reply{.status = 403,
                 .body = "<Error><Code>AccessDenied</Code><Message>No</Message></Error>"};
  });
  run(1, packing(Stream::terminal));
  EXPECT_EQ(count(Call::deleteSession), 1U);
  expectNothingLeft();

  fs::create_directory(folder_ / "docs/bad\xff");
  EXPECT_THAT(run(2, packing())->error(), HasSubstr("nothing was shared"));
  expectNothingLeft();
}

TEST_F(FileInput, CtrlCRemovesArchivesAtAnyTime) {
  folder_.writeSparse("docs/large", 256 * 1024 * 1024);
  const auto program = start(packing(Stream::terminal));
  ASSERT_TRUE(program->waitToShow("Packing '"));
  interrupt(*program);
  expectNothingLeft();
  EXPECT_TRUE(service_.calls().empty());

  fs::remove(folder_ / "docs/large");
  stall(Call::store);
  for (const std::size_t round : {1U, 2U}) {
    const auto uploading = start(packing());
    ASSERT_TRUE(uploading->waitUntil([&] { return count(Call::store) == round; }));
    EXPECT_FALSE(fs::is_empty(temporary_.path()));
    if (round == 2) {
      stall(Call::deleteSession);
      uploading->signal(SIGINT);
      ASSERT_TRUE(uploading->waitUntil([&] { return count(Call::deleteSession) == round; }));
    }
    interrupt(*uploading);
    expectNothingLeft();
  }
}

}  // namespace
}  // namespace quillbay::test
