#include <QuillbayCloud/Classes/SessionController.h>
#include <QuillbayPlatform/DispatchQueue.h>

#include "CloudTesting.h"
#include "TestCertificates.h"

namespace quillbay::test {
namespace {

using cloud::SessionController;

/// How far a run of two files is when the host acts: among others, a reply is on its way, or the
/// run's own report.
enum Phase { idle, fingerprinting, reply, session, report, completion };
enum Action { cancel, release };

/// The last things that a run does: its last call, and the end of its last line in the log, which
/// it writes when it has that call's reply.
struct End {
  const char* call;
  const char* line;
};
constexpr End kNothing = {"", "Creating fingerprints..."};
constexpr End kCreated = {"create", "proceeding to create session..."};
constexpr End kAddressed = {"upload_url item-2", "Obtained upload URL, proceeding to upload..."};
constexpr End kStoring = {"store item-2", "Performing item (item-2) upload request..."};
constexpr End kNotStored = {"store item-2", "Failed uploading with error invalidResponse"};
constexpr End kFinalized = {"finalize item-2", "Finished upload finalization"};
constexpr End kNotFinalized = {"finalize item-2", "the service refused with status 410: Gone"};
constexpr End kStopped = {"finalize item-2",
                          "debug uploadNextItem(): We are cancelled, will not upload next item"};
constexpr End kDone = {"finalize item-1", "No more uploads left, we are done"};

const Lines kSession = {"session"};
const Lines kSessionAndDone = {"session", "done"};
const Lines kGone = {"webservice: status 410: Gone"};

struct Interruption {
  const char* name;
  Phase phase;
  Call call;
  Action action;
  bool callFails;
  Lines events;
  End end;
};
const Interruption kInterruptions[] = {
    {"CancelBefore", idle, Call::unknown, cancel, false, kSession, kCreated},
    {"CancelFingerprinting", fingerprinting, Call::unknown, cancel, false, {}, kNothing},
    {"CancelCreating", reply, Call::createSession, cancel, false, kSession, kCreated},
    {"ReleaseCreating", reply, Call::createSession, release, false, kSession, kCreated},
    {"CancelFailingCreation", reply, Call::createSession, cancel, true, kGone, kCreated},
    {"ReleaseFailingCreation", reply, Call::createSession, release, true, kGone, kCreated},
    {"CancelInSessionCallback", session, Call::unknown, cancel, false, kSession, kCreated},
    {"ReleaseInSessionCallback", session, Call::unknown, release, false, kSession, kCreated},
    {"CancelReport", report, Call::createSession, cancel, true, kSession, kCreated},
    {"ReleaseReport", report, Call::createSession, release, true, kSession, kCreated},
    {"CancelRequesting", reply, Call::uploadUrl, cancel, false, kSession, kStopped},
    {"ReleaseRequesting", reply, Call::uploadUrl, release, false, kSession, kAddressed},
    {"CancelUploading", reply, Call::store, cancel, false, kSession, kStopped},
    {"CancelFailingUpload", reply, Call::store, cancel, true, kSession, kNotStored},
    {"ReleaseUploading", reply, Call::store, release, false, kSession, kStoring},
    {"CancelFinalizing", reply, Call::finalize, cancel, false, kSession, kStopped},
    {"CancelFailingFinalization", reply, Call::finalize, cancel, true, kSession, kNotFinalized},
    {"ReleaseFinalizing", reply, Call::finalize, release, false, kSession, kFinalized},
    {"CancelInCompletion", completion, Call::unknown, cancel, false, kSessionAndDone, kDone},
    {"ReleaseInCompletion", completion, Call::unknown, release, false, kSessionAndDone, kDone},
};

using SessionControllerLifetime = ServiceTest;
class SessionControllerInterruption : public ServiceTest,
                                      public testing::WithParamInterface<Interruption> {};
INSTANTIATE_TEST_SUITE_P(Rows, SessionControllerInterruption, testing::ValuesIn(kInterruptions),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(SessionControllerInterruption, LeavesNoCallbackAndNoFurtherCall) {
  const auto& row = GetParam();
  const Reply withoutItems = Reply::json(R"({"id":"s","url":"https://q.example","items":[]})");
  if (row.phase == report) service_.answer(row.call, withoutItems);
  std::shared_ptr<Gate> gate;
  if (row.phase == reply) {
    gate = service_.hold(row.call, row.callFails ? std::optional(gone_) : std::nullopt);
  }
  Host host(files(2));
  const auto act = [&] {
    if (row.action == cancel) return host.controller->cancel();
    const std::weak_ptr<SessionController> weakController = host.controller;
    host.controller.reset();
    EXPECT_TRUE(weakController.expired()) << "kept alive by its work";
  };
  if (row.phase == session) host.onSession = act;
  if (row.phase == report) host.onSession = [&] { platform::DispatchQueue::main().async(act); };
  if (row.phase == completion) host.onEnd = act;
  if (row.phase == idle) act();
  host.share();
  if (row.phase == fingerprinting) act();
  if (row.phase == reply) {
    ASSERT_TRUE(waitForCall(row.call));
    act();
    gate->open();
  }
  ASSERT_TRUE(host.waitForEnd());
  const auto hasEnded = [&] { return RecordingLogger::lastLine().ends_with(row.end.line); };
  ASSERT_TRUE(waitUntil(hasEnded)) << RecordingLogger::lastLine();
  drainMainQueue();
  EXPECT_TRUE(hasEnded()) << RecordingLogger::lastLine();
  EXPECT_EQ(host.events, row.events);
  const Lines calls = service_.calls();
  EXPECT_EQ(calls.empty() ? "" : calls.back(), row.end.call);
}

TEST_F(SessionControllerLifetime, ACompletionMayStartTheNextRun) {
  Host host(files(2));
  host.onEnd = [&] {
    if (host.sessions.size() == 2) host.share();
  };
  ASSERT_TRUE(host.shareToEnd());
  EXPECT_EQ(host.events, (Lines{"session", "done", "session", "done"}));
}

TEST_F(SessionControllerLifetime, AHostThatExitsForksOrLacksWhatItNeedsAtAnyMomentEndsCleanly) {
  const std::string small = folder_.writePattern("small", 100'000);
  // Beyond what the sockets' buffers take.
  const std::string large = folder_.writeSparse("large", 64 * 1024 * 1024);
  const auto expectCleanEnd = [](const ScriptedServer& service, const std::string& arguments) {
    const std::string command =
        "QUILLBAY_CACERT=" + TestCertificates::shared().authorityPath().string() +
        " QUILLBAY_CONNECT_TO=cloud.quillbay.example:443:127.0.0.1:" +
        std::to_string(service.port()) + " timeout -s KILL 10 " TORTURE_HOST " " + arguments;
    EXPECT_EQ(std::system((command + " >/dev/null").c_str()), 0) << command;
  };
  for (int moment = 0; moment < 30'000; moment += 1'500) {
    for (const std::string mode : {"return ", "exit "}) {
      expectCleanEnd(service_.server(), mode + std::to_string(moment) + " " + small);
    }
  }
  expectCleanEnd(service_.server(), "fork-unused 0 " + small);
  // Takes longer to read than is waited for.
  const std::string huge = folder_.writeSparse("huge", std::uint64_t{1} << 36);
  expectCleanEnd(service_.server(), "exit 10000 " + huge);
  for (const char* arguments : {"threads 0 ", "threads 1 ", "threads 2 ", "descriptors 0 ",
                                "descriptors 1 ", "descriptors 2 ", "descriptors 3 "}) {
    expectCleanEnd(service_.server(), arguments + small);
  }
  ScriptedServer silent;
  silent.onConnection([](Connection& connection) { connection.waitFor(Gate()); });
  for (const char* arguments : {"exit 10000 ", "exit-elsewhere 20000 ", "fork-idle 0 "}) {
    expectCleanEnd(silent, arguments + small);
  }
  ScriptedServer stalled;
  stalled.onConnection([](Connection& connection) {
    connection.readRequest(1024 * 1024);
    connection.waitFor(Gate());
  });
  service_.answer(Call::uploadUrl,
                  Reply::json(R"({"url":")" + stalled.address("/", "localhost") + "\"}"));
  for (const char* arguments : {"exit -1 ", "exit -1 ", "exit -1 ", "fork-busy -1 "}) {
    expectCleanEnd(service_.server(), arguments + large);
  }
}

}  // namespace
}  // namespace quillbay::test
