#include <QuillbayPlatform/FileHandle.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <fstream>

namespace quillbay::platform {
namespace {

namespace fs = std::filesystem;

class FileHandleTest : public testing::Test {
 protected:
  FileHandleTest() {
    std::string pattern = (fs::temp_directory_path() / "quillbay-test-XXXXXX").native();
    folder_ = mkdtemp(pattern.data());
  }
  ~FileHandleTest() override { fs::remove_all(folder_); }

  fs::path write(const char* name, std::string_view content) const {
    std::ofstream(folder_ / name, std::ios::binary) << content;
    return folder_ / name;
  }

  static std::string readAll(FileHandle& file) {
    std::string content;
    std::array<std::byte, 3> piece;
    for (;;) {
      const auto byteCount = file.read(piece);
      if (!byteCount) return "error: " + byteCount.error()->description();
      if (*byteCount == 0) return content;
      content.append(reinterpret_cast<const char*>(piece.data()), *byteCount);
    }
  }

  fs::path folder_;
};

TEST_F(FileHandleTest, ReadsAFileThroughALinkToItsEndAndAgainFromAnyOffset) {
  const fs::path path = write("a\xFF b.txt", "0123456789");
  fs::create_symlink(path, folder_ / "link");
  auto file = FileHandle::openForReading(URL::fileURL(folder_ / "link"));
  ASSERT_TRUE(file);
  file->adviseSequential();
  EXPECT_EQ(file->byteCount().value(), 10U);
  EXPECT_EQ(readAll(*file), "0123456789");
  ASSERT_TRUE(file->seek(7));
  FileHandle moved = std::move(*file);
  EXPECT_EQ(readAll(moved), "789");
  EXPECT_FALSE(moved.seek(std::numeric_limits<std::uint64_t>::max()));
}

TEST_F(FileHandleTest, RefusesAtOnceWhateverIsNoRegularFile) {
  const fs::path fifo = folder_ / "fifo";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  const fs::path socketPath = folder_ / "socket";
  const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
  socketPath.native().copy(address.sun_path, sizeof(address.sun_path) - 1);
  ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);

  for (const fs::path& path : {folder_, fifo, socketPath, fs::path("/dev/null")}) {
    SCOPED_TRACE(path);
    const auto file = FileHandle::openForReading(URL::fileURL(path));
    ASSERT_FALSE(file);
    EXPECT_EQ(file.error()->description(), "Cannot open " + path.native() + ": not a regular file");
    const auto attributes = fileAttributes(URL::fileURL(path));
    ASSERT_TRUE(attributes);
    EXPECT_FALSE(attributes->byteCount);
  }
  close(listener);
}

TEST_F(FileHandleTest, NamesTheFileAndTheReasonOfAFailure) {
  const auto missing = URL::fileURL(folder_ / "missing");
  const std::string reason = missing.path() + ": No such file or directory";
  EXPECT_EQ(FileHandle::openForReading(missing).error()->description(), "Cannot open " + reason);
  EXPECT_EQ(fileAttributes(missing).error()->description(),
            "Cannot read the attributes of " + reason);
  EXPECT_EQ(fileAttributes(*URL::parse("https://a.example/b?secret")).error()->description(),
            "Cannot read the attributes of https://a.example/b: not a local file");
}

TEST_F(FileHandleTest, DoesNotCutAPathAtANUL) {
  const fs::path path = write("a", "content");
  const auto url = URL::parse(URL::fileURL(path).absoluteString() + "%00.txt");
  ASSERT_TRUE(url);
  EXPECT_FALSE(FileHandle::openForReading(*url));
  EXPECT_FALSE(fileAttributes(*url));
}

TEST_F(FileHandleTest, TellsTheSizeOfALinksTarget) {
  fs::create_symlink(write("a", "12345"), folder_ / "link");
  EXPECT_EQ(fileAttributes(URL::fileURL(folder_ / "link")).value().byteCount, 5U);
  EXPECT_EQ(fileAttributes(URL::fileURL(write("empty", ""))).value().byteCount, 0U);
}

TEST_F(FileHandleTest, IsNotInheritedByProgramsThatTheHostStarts) {
  const fs::path path = write("a", "content");
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
