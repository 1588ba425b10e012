#include <QuillbayPlatform/FileHandle.h>
#include <TemporaryFolder.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>

namespace quillbay::platform {
namespace {

namespace fs = std::filesystem;

class FileHandleTest : public testing::Test {
 protected:
  static std::string readAll(FileHandle& file) {
    std::string content;
    std::array<std::byte, 3> piece;
    while (const std::size_t byteCount = file.read(piece).value()) {
      content.append(reinterpret_cast<const char*>(piece.data()), byteCount);
    }
    return content;
  }

  test::TemporaryFolder folder_;
};

TEST_F(FileHandleTest, ReadsAFileThroughALinkToItsEndAndAgainFromAnyOffset) {
  fs::create_symlink(folder_.write("a\xFF b.txt", "0123456789"), folder_ / "link");
  const URL link = URL::fileURL(folder_ / "link");
  EXPECT_EQ(fileAttributes(link).value().byteCount, 10U);
  auto file = FileHandle::openForReading(link);
  ASSERT_TRUE(file);
  EXPECT_EQ(file->byteCount().value(), 10U);
  EXPECT_EQ(readAll(*file), "0123456789");
  ASSERT_TRUE(file->seek(7));
  FileHandle moved = std::move(*file);
  EXPECT_EQ(readAll(moved), "789");
}

TEST_F(FileHandleTest, RefusesAtOnceWhateverIsNoRegularFile) {
  const fs::path fifo = folder_ / "fifo";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  for (const fs::path& path : {folder_.path(), fifo, fs::path("/dev/null")}) {
    SCOPED_TRACE(path);
    const auto file = FileHandle::openForReading(URL::fileURL(path));
    ASSERT_FALSE(file);
    EXPECT_EQ(file.error()->description(), "Cannot open " + path.native() + ": not a regular file");
    EXPECT_FALSE(fileAttributes(URL::fileURL(path)).value().byteCount);
  }
}

TEST_F(FileHandleTest, NamesTheFileAndTheReasonOfAFailureWithoutItsQuery) {
  const auto missing = URL::fileURL(folder_ / "missing");
  const std::string reason = missing.path() + ": No such file or directory";
  EXPECT_EQ(FileHandle::openForReading(missing).error()->description(), "Cannot open " + reason);
  EXPECT_EQ(fileAttributes(*URL::parse("https://a.example/b?secret")).error()->description(),
            "Cannot read the attributes of https://a.example/b: not a local file");
}

TEST_F(FileHandleTest, DoesNotCutAPathAtANUL) {
  const URL file = URL::fileURL(folder_.write("a", "content"));
  EXPECT_FALSE(FileHandle::openForReading(*URL::parse(file.absoluteString() + "%00.txt")));
}

TEST_F(FileHandleTest, IsNotInheritedByProgramsThatTheHostStarts) {
  const fs::path path = folder_.write("a", "content");
  const auto file = FileHandle::openForReading(URL::fileURL(path));
  ASSERT_TRUE(file);
  int openCount = 0;
  for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
    std::error_code error;
    if (fs::read_symlink(entry, error) != path) continue;
    ++openCount;
    EXPECT_TRUE(fcntl(std::stoi(entry.path().filename()), F_GETFD) & FD_CLOEXEC);
  }
  EXPECT_EQ(openCount, 1);
}

}  // namespace
}  // namespace quillbay::platform
