#include <QuillbayCloud/Classes/SessionController.h>

#include "CloudTesting.h"

namespace quillbay::test {
namespace {

using platform::URL;
using Indices = std::vector<std::size_t>;

/// Runs that continue a session of three files.
class SessionResumptionTest : public ServiceTest {
 protected:
  /// Shares, and lets the run fail at the `callCount`th call about an item.
  Host shareUntil(int callCount) {
    std::atomic<int> count = 0;
    const auto hook = [&](const Request&, const Reply& ordinary) {
      return count++ < callCount ? ordinary : gone_;
    };
    const auto itemCalls = {Call::uploadUrl, Call::store, Call::finalize};
    for (const Call call : itemCalls) service_.setHook(call, hook);
    Host host(files(3));
    EXPECT_TRUE(host.shareToEnd());
    EXPECT_EQ(count, callCount + 1) << "calls after the failure";
    for (const Call call : itemCalls) service_.setHook(call, nullptr);
    return host;
  }

  /// The session as a host keeps it and reads it back in a later launch.
  static cloud::Session kept(const Host& host) {
    using enum platform::JSONDatePolicy;
    const auto text = platform::JSONEncoder(secondsSince1970).encode(host.sessions.at(0));
    return decoded<cloud::Session>(text.value(), secondsSince1970).value();
  }
};

TEST_F(SessionResumptionTest, UploadsWhatIsMissingAfterEveryPrefixOfARun) {
  for (int callCount = 0; callCount < 9; ++callCount) {
    SCOPED_TRACE(callCount);
    const Host host = shareUntil(callCount);
    const Indices uploaded = host.controller->uploadedItems();
    EXPECT_EQ(uploaded.size(), static_cast<std::size_t>(callCount / 3));

    Lines expected = service_.calls();
    Host resumed(files(3));
    resumed.resume(kept(host), uploaded);
    ASSERT_TRUE(resumed.waitForEnd());
    EXPECT_EQ(resumed.events, Lines{"done"});
    for (std::size_t item = 3 - uploaded.size(); item > 0; --item) {
      for (const char* call : {"upload_url item-", "store item-", "finalize item-"}) {
        expected.push_back(call + std::to_string(item));
      }
    }
    EXPECT_EQ(service_.calls(), expected);
    EXPECT_EQ(resumed.controller->progress()->fractionCompleted(), 1);
    EXPECT_EQ(resumed.controller->activity().finishedFileCount, 3U);
  }
}

TEST_F(SessionResumptionTest, FilesThatArrivedNeedNotExistAndTheOthersMustBeTheAnnouncedOnes) {
  const Host host = shareUntil(3);
  const std::vector<URL> announced = files(3);
  const URL gone = URL::fileURL(folder_ / "gone");
  const URL another = file("another", "another content");
  const struct {
    std::vector<URL> urls;
    Indices uploaded;
    const char* outcome;
    const char* activity;
    std::size_t callCount;
  } rows[] = {
      {{announced[0], announced[1], gone}, {2, 2, 17}, "done", "finished", 6},
      {announced, {0, 1, 2}, "done", "finished", 0},
      {{announced[0], another, gone}, {2}, "invalidFile", "failed in fingerprinting 1", 0},
      {{announced[0], gone, gone}, {2}, "fingerprintFailure", "failed in fingerprinting", 0},
      {{announced[0]}, {2}, "invalidResponse", "failed in fingerprinting", 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.outcome);
    const std::size_t earlierCallCount = service_.calls().size();
    Host resumed(row.urls);
    resumed.resume(kept(host), row.uploaded);
    ASSERT_TRUE(resumed.waitForEnd());
    EXPECT_EQ(resumed.events, Lines{row.outcome});
    EXPECT_EQ(textOf(resumed.controller->activity()), row.activity);
    EXPECT_LE(resumed.controller->uploadedItems().size(), 3U);
    EXPECT_EQ(service_.calls().size() - earlierCallCount, row.callCount);
  }
}

TEST_F(SessionResumptionTest, ACancelledRunTellsNoEndSaysSoAndStillNotesWhatArrives) {
  const Host host = shareUntil(3);
  for (const bool isCancelled : {false, true}) {
    const auto gate =
        service_.hold(Call::uploadUrl, isCancelled ? std::nullopt : std::optional(gone_));
    Host resumed(files(3));
    const auto& controller = *resumed.controller;
    std::string told;
    const auto observation =
        resumed.controller->observeActivity([&](const auto& activity) { told = textOf(activity); });
    resumed.resume(kept(host), {2});
    ASSERT_TRUE(waitUntil([&] { return told == "requesting 1"; }));
    if (isCancelled) resumed.controller->cancel();
    gate->open();
    const Indices uploaded = isCancelled ? Indices{2, 1} : Indices{2};
    EXPECT_TRUE(waitUntil([&] { return controller.uploadedItems() == uploaded; }));
    ASSERT_TRUE(resumed.waitForEnd());
    drainMainQueue();
    EXPECT_EQ(resumed.events.size(), isCancelled ? 0U : 1U);
    EXPECT_EQ(textOf(controller.activity()), told);
    EXPECT_EQ(told, isCancelled ? "cancelled in requesting 1" : "failed in requesting 1");
  }
}

}  // namespace
}  // namespace quillbay::test
