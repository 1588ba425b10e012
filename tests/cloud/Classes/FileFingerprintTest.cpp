#include <QuillbayCloud/Classes/FileFingerprint.h>
#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/SHA256.h>
#include <sys/inotify.h>

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

using FileFingerprintTest = ServiceTest;

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
  // A file of the system: it tells no size, and a read gives a page at most.
  const std::string text = readFile("/proc/kallsyms");
  if (!text.empty()) {
    platform::SHA256 hash;
    hash.update(std::as_bytes(std::span(text)));
    files.push_back(URL::fileURL("/proc/kallsyms"));
    expected[files.back()] = platform::lowercaseHexadecimal(hash.finalize().value());
  }
  const auto fingerprint = FileFingerprint::create(files);
  FileFingerprint::Fingerprints result;
  fingerprint->calculate([&](auto fingerprints) { result = fingerprints.value(); });
  EXPECT_TRUE(waitUntil([&] { return !result.empty(); }));
  EXPECT_EQ(result, expected);
}

TEST_F(FileFingerprintTest, NoFileIsOpenedAndNothingToldOnceTheControllerIsCancelledOrReleased) {
  const URL good = file("good", "x");
  const int watch = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  ASSERT_GE(::inotify_add_watch(watch, good.path().c_str(), IN_OPEN), 0);
  for (const bool isCancelled : {true, false}) {
    std::optional<BusyWorkQueue> busy(std::in_place);
    Host host({good});
    host.share();
    isCancelled ? host.controller->cancel() : host.controller.reset();
    busy.reset();
    ASSERT_TRUE(host.waitForEnd());
    EXPECT_EQ(host.events, Lines());
    char event[sizeof(inotify_event) + NAME_MAX + 1];
    EXPECT_LT(::read(watch, event, sizeof(event)), 0) << "opened";
  }
  ::close(watch);
  EXPECT_TRUE(RecordingLogger::lastLine().ends_with("Creating fingerprints..."));
}

}  // namespace
}  // namespace quillbay::test
