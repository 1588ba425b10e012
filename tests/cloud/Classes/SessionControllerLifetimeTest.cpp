#include <QuillbayCloud/Classes/SessionController.h>
#include <QuillbayPlatform/DispatchQueue.h>
#include <QuillbayPlatform/MainQueue.h>

#include "CloudTesting.h"
#include "Waiting.h"

namespace quillbay::test {
namespace {

using cloud::SessionController;
using Call = FakeService::Call;
using Lines = std::vector<std::string>;

/// Where a run of two files stands when the host acts: among others, a reply is on its way.
enum Phase { idle, fingerprinting, reply, session, completion };
enum Action { cancel, release };

struct Interruption {
  const char* name;
  Phase phase;
  Call call;
  Action action;
  bool callFails;
  Lines events;
  const char* lastCall;
};

const Lines kSession = {"session"};
const Lines kDone = {"session", "done"};
const Lines kGone = {"webservice: status 410: Gone"};
const Interruption kInterruptions[] = {
    {"CancelBefore", idle, Call::unknown, cancel, false, kSession, "create"},
    {"CancelFingerprinting", fingerprinting, Call::unknown, cancel, false, {}, ""},
    {"ReleaseFingerprinting", fingerprinting, Call::unknown, release, false, {}, ""},
    {"CancelCreating", reply, Call::createSession, cancel, false, kSession, "create"},
    {"ReleaseCreating", reply, Call::createSession, release, false, kSession, "create"},
    {"CancelFailingCreation", reply, Call::createSession, cancel, true, kGone, "create"},
    {"ReleaseFailingCreation", reply, Call::createSession, release, true, kGone, "create"},
    {"CancelInSessionCallback", session, Call::unknown, cancel, false, kSession, "create"},
    {"ReleaseInSessionCallback", session, Call::unknown, release, false, kSession, "create"},
    {"CancelRequesting", reply, Call::uploadUrl, cancel, false, kSession, "finalize item-2"},
    {"ReleaseRequesting", reply, Call::uploadUrl, release, false, kSession, "upload_url item-2"},
    {"CancelUploading", reply, Call::store, cancel, false, kSession, "finalize item-2"},
    {"CancelFailingUpload", reply, Call::store, cancel, true, kSession, "store item-2"},
    {"ReleaseUploading", reply, Call::store, release, false, kSession, "store item-2"},
    {"CancelFinalizing", reply, Call::finalize, cancel, false, kSession, "finalize item-2"},
    {"CancelFailingFinalization", reply, Call::finalize, cancel, true, kSession, "finalize item-2"},
    {"ReleaseFinalizing", reply, Call::finalize, release, false, kSession, "finalize item-2"},
    {"CancelInCompletion", completion, Call::unknown, cancel, false, kDone, "finalize item-1"},
    {"ReleaseInCompletion", completion, Call::unknown, release, false, kDone, "finalize item-1"},
};

class SessionControllerLifetime : public ServiceTest {
 protected:
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
};

class SessionControllerInterruption : public SessionControllerLifetime,
                                      public testing::WithParamInterface<Interruption> {};
INSTANTIATE_TEST_SUITE_P(Rows, SessionControllerInterruption, testing::ValuesIn(kInterruptions),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(SessionControllerInterruption, LeavesNoCallbackAndNoFurtherCall) {
  const auto& row = GetParam();
  if (row.phase == reply) hold(row.call, row.callFails ? std::optional(gone_) : std::nullopt);

  Host host(files(2));
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
  if (row.phase == reply) {
    ASSERT_TRUE(waitForCall(row.call));
    act();
    gate_->open();
  }
  EXPECT_TRUE(host.waitForEnd());
  EXPECT_TRUE(waitUntil([&] { return lastCall() == row.lastCall; }));
  settle();
  EXPECT_EQ(host.events, row.events);
  EXPECT_EQ(lastCall(), row.lastCall);
}

// The queue has found its error and posted it; the host acts before it arrives.
TEST_F(SessionControllerLifetime, AReportUnderWayIsNotDeliveredAfterCancelOrRelease) {
  answer(Call::createSession, Reply::json(R"({"id":"s","url":"https://q.example","items":[]})"));
  for (const Action action : {cancel, release}) {
    Host host(files(1));
    host.onSession = [&] {
      platform::DispatchQueue::main().async([&] {
        if (action == cancel) return host.controller->cancel();
        host.controller.reset();
      });
    };
    host.share();
    ASSERT_TRUE(host.waitForEnd());
    EXPECT_EQ(host.events, Lines{"session"});
  }
}

TEST_F(SessionControllerLifetime, ACompletionMayStartTheNextRun) {
  Host host(files(2));
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
      SessionController::create({"host-1", files(2)}, cloud::SessionConfiguration::default_());
  const std::weak_ptr<SessionController> weakController = controller;
  bool isDone = false;
  controller->createSession([controller, &isDone](const auto&) { isDone = true; });
  controller.reset();
  ASSERT_TRUE(waitUntil([&] { return isDone; }));
  EXPECT_TRUE(weakController.expired());
}

TEST_F(SessionControllerLifetime, SurvivesReleaseAfterAnyNumberOfTurns) {
  for (int turnCount = 0; turnCount < 60; ++turnCount) {
    Host host(files(2));
    host.share();
    int turn = 0;
    (void)platform::runMainQueue([&] { return turn++ == turnCount / 3; },
                                 std::chrono::milliseconds(turnCount));
    host.controller.reset();
    ASSERT_TRUE(host.waitForEnd()) << turnCount;
  }
  settle();
}

}  // namespace
}  // namespace quillbay::test
