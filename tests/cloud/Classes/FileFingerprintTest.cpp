#include <QuillbayCloud/Classes/FileFingerprint.h>
#include <QuillbayPlatform/DispatchQueue.h>
#include <sys/inotify.h>
#include <sys/stat.h>

#include <climits>

#include "CloudTesting.h"

namespace quillbay::test {
namespace {

using cloud::FileFingerprint;
using platform::URL;

/// Holds every thread of the work queue, so that what is submitted meanwhile waits.
class BusyWorkQueue {
 public:
  BusyWorkQueue() {
    const std::shared_future<void> end = end_.get_future();
    for (unsigned i = 0; i < std::max(2U, std::thread::hardware_concurrency()); ++i) {
      platform::DispatchQueue::globalUserInitiated().async([end] { end.wait(); });
    }
  }
  ~BusyWorkQueue() { end_.set_value(); }

 private:
  std::promise<void> end_;
};

class FileFingerprintTest : public ServiceTest {
 protected:
  using Result = std::expected<FileFingerprint::Fingerprints, FileFingerprint::FileHasherError>;

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

  int livingObjectCount_ = 0;
  std::optional<Result> result_;
};

TEST_F(FileFingerprintTest, IsTheSHA256OfTheWholeContent) {
  // Around the size of the read buffer, and the long message of FIPS 180-2.
  const std::pair<std::size_t, const char*> rows[] = {
      {0, "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
      {131072, "b44ffb72fcc259676bd80495fef1b44b808ca8f1ffe1b1706a4d7911b0e31f11"},
      {131073, "7e009ea4ef882e385b3c0bcbbfa8d009bb0a633bdd764415c09182ee0e75da73"},
      {1000000, "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
  };
  FileFingerprint::Fingerprints expected;
  std::vector<URL> files;
  for (const auto& [byteCount, digest] : rows) {
    files.push_back(file(std::to_string(byteCount), std::string(byteCount, 'a')));
    expected[files.back()] = digest;
  }
  const auto fingerprint = start(files);
  EXPECT_EQ(waitForEnd().value(), expected);
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
    EXPECT_FALSE(waitForEnd().value()) << bad.path();
  }
}

TEST_F(FileFingerprintTest, OpensNoFileAndReportsNothingOnceItIsCancelledOrReleased) {
  const URL good = file("good", "x");
  const int watch = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  ASSERT_GE(::inotify_add_watch(watch, good.path().c_str(), IN_OPEN), 0);
  for (const bool isCancelled : {true, false}) {
    std::optional<BusyWorkQueue> busy(std::in_place);
    auto fingerprint = start({good});
    const std::weak_ptr<FileFingerprint> weakFingerprint = fingerprint;
    isCancelled ? fingerprint->cancel() : fingerprint.reset();
    EXPECT_EQ(weakFingerprint.expired(), !isCancelled);
    busy.reset();
    EXPECT_FALSE(waitForEnd());
    char event[sizeof(inotify_event) + NAME_MAX + 1];
    EXPECT_LT(::read(watch, event, sizeof(event)), 0) << "opened";
  }
  ::close(watch);
}

}  // namespace
}  // namespace quillbay::test
