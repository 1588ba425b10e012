#include <QuillbayCloud/Classes/SessionController.h>
#include <QuillbayPlatform/MainQueue.h>

#include "CloudTesting.h"
#include "FakeService.h"
#include "TemporaryFolder.h"
#include "Waiting.h"

namespace quillbay::test {
namespace {

using cloud::SessionController;
using platform::URL;
using Call = FakeService::Call;
using Lines = std::vector<std::string>;

/// Where a run of two files stands when the host acts. The middle ones: a reply is on its way.
enum Phase {
  idle,
  fingerprinting,
  creating,
  requesting,
  uploading,
  finalizing,
  session,
  completion
};
enum Action { cancel, release };

Call callOf(Phase phase) {
  constexpr Call kCalls[] = {Call::createSession, Call::uploadUrl, Call::store, Call::finalize};
  return phase < creating || phase > finalizing ? Call::unknown : kCalls[phase - creating];
}

struct Interruption {
  const char* name;
  Phase phase;
  Action action;
  bool callFails;
  Lines events;
  const char* lastCall;
};

const Lines kSession = {"session"};
const Lines kDone = {"session", "done"};
const Lines kGone = {"webservice: status 410: Gone"};
const Interruption kInterruptions[] = {
    {"CancelBefore", idle, cancel, false, kSession, "create"},
    {"CancelFingerprinting", fingerprinting, cancel, false, {}, ""},
    {"ReleaseFingerprinting", fingerprinting, release, false, {}, ""},
    {"CancelCreating", creating, cancel, false, kSession, "create"},
    {"ReleaseCreating", creating, release, false, kSession, "create"},
    {"CancelFailingCreation", creating, cancel, true, kGone, "create"},
    {"ReleaseFailingCreation", creating, release, true, kGone, "create"},
    {"CancelInSessionCallback", session, cancel, false, kSession, "create"},
    {"ReleaseInSessionCallback", session, release, false, kSession, "create"},
    {"CancelRequesting", requesting, cancel, false, kSession, "finalize item-2"},
    {"ReleaseRequesting", requesting, release, false, kSession, "upload_url item-2"},
    {"CancelUploading", uploading, cancel, false, kSession, "finalize item-2"},
    {"CancelFailingUpload", uploading, cancel, true, kSession, "store item-2"},
    {"ReleaseUploading", uploading, release, false, kSession, "store item-2"},
    {"CancelFinalizing", finalizing, cancel, false, kSession, "finalize item-2"},
    {"CancelFailingFinalization", finalizing, cancel, true, kSession, "finalize item-2"},
    {"ReleaseFinalizing", finalizing, release, false, kSession, "finalize item-2"},
    {"CancelInCompletion", completion, cancel, false, kDone, "finalize item-1"},
    {"ReleaseInCompletion", completion, release, false, kDone, "finalize item-1"},
};

class SessionControllerLifetime : public testing::Test {
 protected:
  SessionControllerLifetime() {
    service_.install();
    RecordingLogger::install();
  }

  std::vector<URL> twoFiles() const {
    return {URL::fileURL(folder_.write("a", "first")), URL::fileURL(folder_.write("b", "second"))};
  }
  /// Holds the replies to `call` until the gate opens.
  void hold(Call call, const std::shared_ptr<Gate>& gate, bool fails) {
    service_.setHook(call, [gate, fails](const Request&, Reply ordinary) {
      Reply reply =
          fails ? Reply::json(R"({"message":"Gone","status":410})", 410) : std::move(ordinary);
      reply.sendAfter = gate;
      return reply;
    });
  }
  /// The last call that belongs to a run.
  std::string lastCall() const {
    auto calls = service_.calls();
    std::erase(calls, "delete session-1");
    return calls.empty() ? "" : calls.back();
  }
  /// Whatever the run has still under way has come to its end: a deletion goes the same road.
  static void settle() {
    bool isDeleted = false;
    SessionController::deleteSession("session-1", "host-1", FakeService::token,
                                     [&](const auto&) { isDeleted = true; });
    EXPECT_TRUE(waitUntil([&] { return isDeleted; }));
    drainMainQueue();
  }

  const TemporaryFolder folder_;
  FakeService service_;
};

class SessionControllerInterruption : public SessionControllerLifetime,
                                      public testing::WithParamInterface<Interruption> {};
INSTANTIATE_TEST_SUITE_P(Rows, SessionControllerInterruption, testing::ValuesIn(kInterruptions),
                         nameOfRow);

TEST_P(SessionControllerInterruption, LeavesNoCallbackAndNoFurtherCall) {
  const auto& row = GetParam();
  const Call heldCall = callOf(row.phase);
  const auto gate = std::make_shared<Gate>();
  if (heldCall != Call::unknown) hold(heldCall, gate, row.callFails);

  Host host(twoFiles());
  const auto act = [&] {
    if (row.action == cancel) return host.controller->cancel();
    const std::weak_ptr<SessionController> weakController = host.controller;
    host.controller.reset();
    EXPECT_TRUE(weakController.expired()) << "kept alive by its work";
  };
  if (row.phase == session) host.onSession = act;
  if (row.phase == completion) host.onEnd = act;
  if (row.phase == idle) act();
  host.share();
  if (row.phase == fingerprinting) act();
  if (heldCall != Call::unknown) {
    ASSERT_TRUE(waitUntil([&] { return !service_.requests(heldCall).empty(); }));
    act();
    gate->open();
  }
  EXPECT_TRUE(host.waitForEnd());
  EXPECT_TRUE(waitUntil([&] { return lastCall() == row.lastCall; }));
  settle();
  EXPECT_EQ(host.events, row.events);
  EXPECT_EQ(lastCall(), row.lastCall);
}

TEST_F(SessionControllerLifetime, ACancelledQueueSaysSoAndStops) {
  const auto gate = std::make_shared<Gate>();
  hold(Call::store, gate, false);
  Host host(twoFiles());
  host.share();
  ASSERT_TRUE(waitUntil([&] { return !service_.requests(Call::store).empty(); }));
  host.controller->cancel();
  gate->open();
  EXPECT_TRUE(waitUntil([] {
    return RecordingLogger::hasLine(
        "debug uploadNextItem(): We are cancelled, will not upload next item");
  }));
  EXPECT_EQ(service_.calls().back(), "finalize item-2");
}

TEST_F(SessionControllerLifetime, ACompletionMayStartTheNextRun) {
  Host host(twoFiles());
  host.onEnd = [&] {
    if (host.sessions.size() == 2) host.share();
  };
  host.share();
  ASSERT_TRUE(host.waitForEnd());
  EXPECT_EQ(host.events, (Lines{"session", "done", "session", "done"}));
}

// Otherwise a completion that holds its controller would keep both for ever.
TEST_F(SessionControllerLifetime, CallbacksAreGoneOnceTheyHaveRun) {
  auto controller =
      SessionController::create({"host-1", twoFiles()}, cloud::SessionConfiguration::default_());
  const std::weak_ptr<SessionController> weakController = controller;
  bool isDone = false;
  controller->createSession([controller, &isDone](const auto&) { isDone = true; });
  controller.reset();
  ASSERT_TRUE(waitUntil([&] { return isDone; }));
  EXPECT_TRUE(weakController.expired());
}

TEST_F(SessionControllerLifetime, SurvivesReleaseAfterAnyNumberOfTurns) {
  for (int turnCount = 0; turnCount < 60; ++turnCount) {
    Host host(twoFiles());
    host.share();
    int turn = 0;
    (void)platform::runMainQueue([&] { return turn++ == turnCount / 3; },
                                 std::chrono::milliseconds(turnCount));
    host.controller.reset();
    ASSERT_TRUE(host.waitForEnd()) << turnCount;
  }
  settle();
}

TEST_F(SessionControllerLifetime, EmptyCallbacksAreAllowed) {
  const auto controller =
      SessionController::create({"host-1", twoFiles()}, cloud::SessionConfiguration::default_());
  controller->createSession(nullptr, nullptr);
  SessionController::deleteSession("session-1", "host-1", FakeService::token, nullptr);
  EXPECT_TRUE(waitUntil([&] {
    return RecordingLogger::hasLine("debug uploadNextItem(): No more uploads left, we are done");
  }));
  settle();
}

}  // namespace
}  // namespace quillbay::test
