#include <QuillbayCloud/Classes/FileFingerprint.h>
#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/SHA256.h>
#include <openssl/sha.h>
#include <sys/stat.h>

#include <array>
#include <latch>
#include <span>

#include "CloudTesting.h"
#include "TemporaryFolder.h"
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
    return fingerprint;
  }
  bool waitForEnd() {
    return waitUntil([this] { return livingObjectCount_ == 0; });
  }
  std::optional<Result> resultFor(std::vector<URL> files) {
    const auto fingerprint = start(std::move(files));
    EXPECT_FALSE(result_);
    EXPECT_TRUE(waitForEnd());
    return std::exchange(result_, std::nullopt);
  }

  const TemporaryFolder folder_;
  const std::thread::id thread_ = std::this_thread::get_id();
  int livingObjectCount_ = 0;
  std::optional<Result> result_;
};

std::string digestOf(const std::string& content) {
  std::array<unsigned char, SHA256_DIGEST_LENGTH> digest;
  ::SHA256(reinterpret_cast<const unsigned char*>(content.data()), content.size(), digest.data());
  return platform::lowercaseHexadecimal(std::as_bytes(std::span(digest)));
}

TEST_F(FileFingerprintTest, IsTheSHA256OfTheWholeContent) {
  std::vector<std::pair<URL, std::string>> digests;
  // Around the sizes of a hash block and of the read buffer.
  for (const std::size_t byteCount : {0U, 64U, 65U, 131071U, 131072U, 131073U, 300000U}) {
    const auto content = patternedBytes(byteCount);
    digests.emplace_back(file(std::to_string(byteCount), content), digestOf(content));
  }
  std::vector<URL> files;
  files.reserve(digests.size());
  for (const auto& [file, digest] : digests) files.push_back(file);
  const auto result = resultFor(files);
  ASSERT_TRUE(result && *result);
  EXPECT_EQ(**result, FileFingerprint::Fingerprints(digests.begin(), digests.end()));
  EXPECT_EQ((*result)->at(files[0]),
            "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

TEST_F(FileFingerprintTest, NoFilesGiveAnEmptyMap) {
  const auto result = resultFor({});
  ASSERT_TRUE(result && *result);
  EXPECT_TRUE((*result)->empty());
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
    const auto result = resultFor({good, bad});
    ASSERT_TRUE(result) << bad.path();
    EXPECT_FALSE(*result) << bad.path();
  }
}

/// Keeps every worker of the queue busy, so that what is started meanwhile has not begun.
class BusyWorkers {
 public:
  BusyWorkers() {
    for (unsigned i = 0; i < std::thread::hardware_concurrency() + 2; ++i) {
      platform::DispatchQueue::globalUserInitiated().async([gate = gate_] { gate->wait(); });
    }
  }
  BusyWorkers(const BusyWorkers&) = delete;
  BusyWorkers& operator=(const BusyWorkers&) = delete;
  ~BusyWorkers() { gate_->count_down(); }

 private:
  std::shared_ptr<std::latch> gate_ = std::make_shared<std::latch>(1);
};

TEST_F(FileFingerprintTest, ReportsNothingWhenCancelledOrReleasedBeforeItBegins) {
  std::shared_ptr<FileFingerprint> cancelled;
  {
    const BusyWorkers busy;
    cancelled = start({file("a", "x")});
    cancelled->cancel();
    start({file("b", "x")}).reset();
  }
  EXPECT_TRUE(waitForEnd());
  EXPECT_FALSE(result_);
}

TEST_F(FileFingerprintTest, ReportsNoFailureWhenCancelled) {
  const auto cancelled = start({URL::fileURL(folder_ / "missing")});
  cancelled->cancel();
  EXPECT_TRUE(waitForEnd());
  EXPECT_FALSE(result_);
}

}  // namespace
}  // namespace quillbay::test
