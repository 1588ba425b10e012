#include <QuillbayCloud/Classes/FileFingerprint.h>
#include <QuillbayPlatform/SHA256.h>
#include <sys/stat.h>

#include <span>

#include "CloudTesting.h"
#include "Waiting.h"

namespace quillbay::test {
namespace {

using cloud::FileFingerprint;
using platform::URL;

class FileFingerprintTest : public testing::Test {
 protected:
  using Result = std::expected<FileFingerprint::Fingerprints, FileFingerprint::FileHasherError>;

  URL file(const std::string& name, std::string_view content) const {
    return URL::fileURL(folder_.write(name, content));
  }

  /// Starts a calculation whose completion holds a host object.
  std::shared_ptr<FileFingerprint> start(std::vector<URL> files) {
    const auto fingerprint = FileFingerprint::create(std::move(files));
    fingerprint->calculate(
        [this, object = std::make_unique<HostObject>(livingObjectCount_)](Result result) {
          EXPECT_EQ(std::this_thread::get_id(), thread_);
          result_ = std::move(result);
        });
    EXPECT_FALSE(result_);
    return fingerprint;
  }
  std::optional<Result> waitForEnd() {
    EXPECT_TRUE(waitUntil([this] { return livingObjectCount_ == 0; }));
    return std::exchange(result_, std::nullopt);
  }

  const TemporaryFolder folder_;
  const std::thread::id thread_ = std::this_thread::get_id();
  int livingObjectCount_ = 0;
  std::optional<Result> result_;
};

TEST_F(FileFingerprintTest, IsTheSHA256OfTheWholeContent) {
  FileFingerprint::Fingerprints expected;
  std::vector<URL> files;
  // Around the size of the read buffer.
  for (const std::size_t byteCount : {0U, 131071U, 131072U, 131073U, 300000U}) {
    const std::string content = patternedBytes(byteCount);
    platform::SHA256 hash;
    hash.update(std::as_bytes(std::span(content)));
    files.push_back(file(std::to_string(byteCount), content));
    expected[files.back()] = platform::lowercaseHexadecimal(hash.finalize());
  }
  const auto fingerprint = start(files);
  const auto result = waitForEnd();
  ASSERT_TRUE(result && *result);
  EXPECT_EQ(**result, expected);
}

TEST_F(FileFingerprintTest, AFileWithoutFingerprintFailsTheWholeCalculation) {
  const auto pipe = folder_ / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const URL good = file("good", "x");
  const URL badFiles[] = {
      URL::fileURL(folder_ / "missing"), URL::fileURL(pipe),
      URL::fileURL(folder_.path()),      URL::fileURL("/dev/zero"),
      URL::fileURL("/proc/self/mem"),    good};  // opens, but cannot be read; twice
  for (const URL& bad : badFiles) {
    const auto fingerprint = start({good, bad});
    const auto result = waitForEnd();
    ASSERT_TRUE(result) << bad.path();
    EXPECT_FALSE(*result) << bad.path();
  }
}

TEST_F(FileFingerprintTest, ReportsNothingWhenCancelled) {
  const auto cancelled = start({file("good", "x"), URL::fileURL(folder_ / "missing")});
  cancelled->cancel();
  EXPECT_FALSE(waitForEnd());
}

}  // namespace
}  // namespace quillbay::test
