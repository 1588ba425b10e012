#include <QuillbayCloud/Classes/SessionController.h>

#include <algorithm>

#include "CloudTesting.h"
#include "Waiting.h"

namespace quillbay::test {
namespace {

using cloud::SessionActivity;
using cloud::SessionController;
using platform::URL;
using Step = SessionActivity::Step;

constexpr const char* kNames[] = {"idle",       "fingerprinting", "creating",
                                  "requesting", "uploading",      "finalizing",
                                  "finished",   "failed",         "cancelled"};

std::string nameOf(Step step) { return kNames[static_cast<std::size_t>(step)]; }

/// "uploading 1", or "failed in uploading 1".
std::string textOf(const SessionActivity& activity) {
  std::string text = nameOf(activity.step);
  if (activity.isOver() && activity.step != Step::finished) {
    text += " in " + nameOf(activity.endedIn);
  }
  return activity.file ? text + " " + std::to_string(activity.file->index) : text;
}

class SessionActivityTest : public ServiceTest {
 protected:
  /// Collects what the observer is told, each text once in a row.
  [[nodiscard]] platform::Observation collect(SessionController& controller) {
    return controller.observeActivity([this](const SessionActivity& activity) {
      activities_.push_back(activity);
      const std::string text = textOf(activity);
      if (texts_.empty() || texts_.back() != text) texts_.push_back(text);
    });
  }

  std::vector<SessionActivity> activities_;
  Lines texts_;
};

TEST_F(SessionActivityTest, TellsEachStepWithItsFileAndCountsFilesAndBytes) {
  const std::vector<URL> urls = {file("empty", ""),
                                 URL::fileURL(folder_.writePattern("large", 3'000'000))};
  Host host(urls);
  EXPECT_EQ(host.controller->activity(), (SessionActivity{.fileCount = 2}));
  const auto observation = collect(*host.controller);
  host.share();
  EXPECT_EQ(host.controller->activity().step, Step::fingerprinting);
  EXPECT_TRUE(texts_.empty()) << "no callback comes inside the call that starts the run";
  ASSERT_TRUE(host.waitForEnd());
  drainMainQueue();

  EXPECT_EQ(texts_,
            (Lines{"fingerprinting", "fingerprinting 0", "creating", "requesting 1", "uploading 1",
                   "finalizing 1", "requesting 0", "uploading 0", "finalizing 0", "finished"}));
  EXPECT_TRUE(std::ranges::is_sorted(activities_, {}, &SessionActivity::sentByteCount));
  const SessionActivity expected{.step = Step::finished,
                                 .endedIn = Step::finalizing,
                                 .finishedFileCount = 2,
                                 .fileCount = 2,
                                 .fingerprintedByteCount = 3'000'000,
                                 .sentByteCount = 3'000'000,
                                 .totalByteCount = 3'000'000};
  EXPECT_EQ(host.controller->activity(), expected);
}

TEST_F(SessionActivityTest, KeepsTheStepAndTheFileOfAFailure) {
  const struct {
    Call call;
    Reply reply;
    const char* text;
    bool isUnanswered;
  } rows[] = {
      {Call::createSession, gone_, "failed in creating", false},
      {Call::uploadUrl, gone_, "failed in requesting 1", false},
      {Call::store, Reply::empty(403), "failed in uploading 1", false},
      {Call::store, Reply::none(), "failed in uploading 1", true},
      {Call::finalize, gone_, "failed in finalizing 1", false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    service_.answer(row.call, row.reply);
    Host host(files(2));
    host.onEnd = [&] {
      EXPECT_EQ(textOf(host.controller->activity()), row.text);
      EXPECT_EQ(host.controller->activity().transportError != nullptr, row.isUnanswered);
    };
    host.share();
    ASSERT_TRUE(host.waitForEnd());
    EXPECT_EQ(host.controller->activity().finishedFileCount, 0U);
    service_.setHook(row.call, nullptr);
  }
}

TEST_F(SessionActivityTest, NamesAllFilesWithoutAFingerprint) {
  const URL gone = URL::fileURL(folder_ / "gone");
  const URL alsoGone = URL::fileURL(folder_ / "also gone");
  Host host({gone, file("here", "x"), alsoGone});
  host.share();
  ASSERT_TRUE(host.waitForEnd());
  const SessionActivity& activity = host.controller->activity();
  EXPECT_EQ(textOf(activity), "failed in fingerprinting");
  EXPECT_EQ(activity.filesWithoutFingerprint,
            (std::vector<SessionActivity::File>{{0, gone}, {2, alsoGone}}));
}

TEST_F(SessionActivityTest, ACancelledRunSaysSoAndStillNotesWhatArrives) {
  const auto gate = service_.hold(Call::finalize);
  Host host(files(2));
  const auto observation = collect(*host.controller);
  host.share();
  ASSERT_TRUE(waitUntil([&] { return host.controller->activity().step == Step::finalizing; }));
  host.controller->cancel();
  EXPECT_EQ(textOf(host.controller->activity()), "cancelled in finalizing 1");
  gate->open();
  EXPECT_TRUE(waitUntil([&] { return !host.controller->uploadedItems().empty(); }));
  EXPECT_EQ(host.controller->uploadedItems(), std::vector<std::size_t>{1});
  EXPECT_EQ(texts_.back(), "cancelled in finalizing 1");
}

/// Runs that continue a session of three files.
class SessionResumptionTest : public SessionActivityTest {
 protected:
  /// Shares, and lets the run fail at the `callCount`th call about an item.
  Host shareUntil(int callCount) {
    for (const Call call : {Call::uploadUrl, Call::store, Call::finalize}) {
      service_.setHook(call, [this, left = std::make_shared<int>(0), callCount](
                                 const Request&, const Reply& ordinary) {
        return itemCallCount_++ < callCount ? ordinary : gone_;
      });
    }
    Host host(files(3));
    host.share();
    EXPECT_TRUE(host.waitForEnd());
    for (const Call call : {Call::uploadUrl, Call::store, Call::finalize}) {
      service_.setHook(call, nullptr);
    }
    itemCallCount_ = 0;
    return host;
  }

  /// What a host would have kept and read back in a later launch.
  static cloud::Session kept(const cloud::Session& session) {
    using enum platform::JSONDatePolicy;
    const auto text = platform::JSONEncoder(secondsSince1970).encode(session);
    return decoded<cloud::Session>(text.value(), secondsSince1970).value();
  }

  /// Continues it with a new controller; returns the outcome.
  std::string resume(const cloud::Session& session, const std::vector<std::size_t>& uploadedItems,
                     const std::vector<URL>& urls) {
    controller_ =
        SessionController::create({"host-1", urls}, cloud::SessionConfiguration::default_());
    std::string outcome;
    controller_->resumeSession(session, uploadedItems, [&](const auto& result) {
      outcome = result ? "done" : result.error().description();
    });
    EXPECT_TRUE(waitUntil([&] { return !outcome.empty(); }));
    drainMainQueue();
    return outcome;
  }

  std::atomic<int> itemCallCount_ = 0;
  std::shared_ptr<SessionController> controller_;
};

TEST_F(SessionResumptionTest, UploadsWhatIsMissingAfterEveryPrefixOfARun) {
  for (int callCount = 0; callCount < 9; ++callCount) {
    SCOPED_TRACE(callCount);
    const Host host = shareUntil(callCount);
    const auto uploaded = host.controller->uploadedItems();
    EXPECT_EQ(uploaded.size(), static_cast<std::size_t>(callCount / 3));
    const std::size_t earlierCallCount = service_.calls().size();

    EXPECT_EQ(resume(kept(host.sessions.at(0)), uploaded, files(3)), "done");
    Lines expected;
    for (std::size_t item = 3 - uploaded.size(); item > 0; --item) {
      for (const char* call : {"upload_url item-", "store item-", "finalize item-"}) {
        expected.push_back(call + std::to_string(item));
      }
    }
    Lines calls = service_.calls();
    calls.erase(calls.begin(), calls.begin() + static_cast<std::ptrdiff_t>(earlierCallCount));
    EXPECT_EQ(calls, expected);
    EXPECT_EQ(controller_->progress()->fractionCompleted(), 1);
    EXPECT_EQ(controller_->activity().finishedFileCount, 3U);
  }
}

TEST_F(SessionResumptionTest, NothingLeftIsSuccessAndFilesThatArrivedNeedNotExist) {
  const Host host = shareUntil(6);
  auto urls = files(3);
  urls[2] = URL::fileURL(folder_ / "gone");
  EXPECT_EQ(resume(host.sessions.at(0), {2, 2, 17}, urls), "done");
  EXPECT_EQ(resume(host.sessions.at(0), {0, 1, 2}, urls), "done");
}

TEST_F(SessionResumptionTest, RefusesAFileThatIsNotTheAnnouncedOneBeforeAnyUpload) {
  const Host host = shareUntil(3);
  const std::size_t earlierCallCount = service_.calls().size();
  auto urls = files(3);
  urls[1] = file("file-2", "another content");
  EXPECT_EQ(resume(host.sessions.at(0), {2}, urls), "invalidFile");
  EXPECT_EQ(textOf(controller_->activity()), "failed in fingerprinting 1");
  urls[1] = URL::fileURL(folder_ / "gone");
  EXPECT_EQ(resume(host.sessions.at(0), {2}, urls), "fingerprintFailure");
  EXPECT_EQ(resume(host.sessions.at(0), {2}, {urls[0]}), "invalidResponse");
  EXPECT_EQ(service_.calls().size(), earlierCallCount);
}

TEST_F(SessionResumptionTest, ASessionThatIsGoneGivesTheServicesRefusal) {
  const Host host = shareUntil(3);
  service_.answer(Call::uploadUrl, gone_);
  EXPECT_EQ(resume(host.sessions.at(0), {2}, files(3)),
            "underlying: the service refused with status 410: Gone");
}

TEST_F(SessionResumptionTest, CancellingEndsItWithoutACallback) {
  const Host host = shareUntil(3);
  const auto gate = service_.hold(Call::uploadUrl);
  const auto controller =
      SessionController::create({"host-1", files(3)}, cloud::SessionConfiguration::default_());
  bool isCalled = false;
  const std::size_t earlierCount = service_.requests(Call::uploadUrl).size();
  controller->resumeSession(host.sessions.at(0), std::vector<std::size_t>{2},
                            [&](const auto&) { isCalled = true; });
  ASSERT_TRUE(waitUntil([&] { return service_.requests(Call::uploadUrl).size() > earlierCount; }));
  controller->cancel();
  gate->open();
  EXPECT_TRUE(waitUntil([&] { return controller->uploadedItems().size() == 2; }));
  drainMainQueue();
  EXPECT_FALSE(isCalled);
}

}  // namespace
}  // namespace quillbay::test
