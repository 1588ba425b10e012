#include "hosts/common/ShareRun.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>

#include "FakeService.h"
#include "TemporaryFolder.h"
#include "Waiting.h"
#include "hosts/common/History.h"

namespace quillbay::test {
namespace {

using namespace std::chrono_literals;
using host::History;
using host::RememberedShare;
using host::ShareRun;
using Call = FakeService::Call;
using Fate = ShareRun::SessionFate;
using Lines = std::vector<std::string>;
using Phase = ShareRun::Phase;
using Result = ShareRun::Result;
using State = RememberedShare::State;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

const Reply kNoReply = Reply::none();
const Reply kGone = FakeService::refusal(410, "Gone");
const Reply kDenied = FakeService::storeRefusal();
const Reply kBusy = FakeService::refusal(503, "Busy");

/// Presents a run as lines of text.
class TextPresenter final : public ShareRun::Presenter {
 public:
  explicit TextPresenter(const std::unique_ptr<ShareRun>& run) : run_(run) {}

  void sessionCreated(const cloud::Session& session, bool isDoomed) override {
    add((isDoomed ? "doomed " : "session ") + session.identifier());
  }
  void failed(const ShareRun::Failure& /*failure*/) override { add("failed"); }
  void phaseChanged() override {
    if (!run_) return;
    const Phase phase = run_->phase();
    if (phase == Phase::waiting) add("wait " + std::to_string(run_->untilNextTry().count()));
    if (phase == Phase::cancelling) add("cancelling");
    if (phase == Phase::deleting) add("deleting");
    if (phase == Phase::over) add("over");
  }

  Lines lines;
  std::function<void(const std::string& line)> onLine = [](const std::string&) {};

 private:
  void add(const std::string& line) {
    lines.push_back(line);
    onLine(line);
  }

  const std::unique_ptr<ShareRun>& run_;
};

class ShareRunTest : public testing::Test {
 protected:
  ShareRunTest() {
    service_.install();
    settings_.clock = [this] { return now_; };
  }

  void make() {
    presenter_.lines.clear();
    run_ = std::make_unique<ShareRun>("host-1", cloud::SessionConfiguration::default_(),
                                      host::SharedFiles({first_, second_}), settings_,
                                      history_.get(), presenter_);
  }
  /// Makes a run that continues `share`, of which files may have arrived.
  void make(const RememberedShare& share, const std::vector<std::size_t>& arrived) {
    make();
    run_->continueFrom({share.session, arrived, share.identifier});
  }
  void start() {
    make();
    run_->start();
  }
  /// Lets every wait pass until the run is over, and tells `beforeTry` the number of the try.
  void finish(const std::function<void(int)>& beforeTry = [](int) {}) {
    ASSERT_TRUE(waitUntil([&] {
      if (run_->phase() != Phase::waiting) return run_->phase() == Phase::over;
      beforeTry(run_->attempt());
      pass(run_->untilNextTry());
      return false;
    }));
  }
  void startAndFinish() {
    start();
    finish();
  }
  RememberedShare leaveUnfinished() {
    settings_.keepsUnfinishedSession = true;
    service_.answer(Call::store, kDenied);
    startAndFinish();
    return *history_->newest();
  }
  void waitFor(Phase phase) {
    ASSERT_TRUE(waitUntil([&] { return run_->phase() == phase; }));
  }
  /// Until there was one more than `earlierCount`.
  void waitForCall(Call call, std::size_t earlierCount = 0) {
    ASSERT_TRUE(waitUntil([&] { return service_.requests(call).size() > earlierCount; }));
  }
  void pass(std::chrono::milliseconds time) {
    now_ += time;
    run_->tick();
  }
  State remembered() { return history_->newest()->state; }

  const TemporaryFolder folder_;
  const std::string first_ = folder_.write("file-1", "content of file-1");
  const std::string second_ = folder_.write("file-2", "content of file-2");
  FakeService service_;
  ShareRun::Clock::time_point now_ = ShareRun::Clock::now();
  ShareRun::Settings settings_;
  std::unique_ptr<History> history_ = std::make_unique<History>(folder_ / "s/history.sqlite");
  std::unique_ptr<ShareRun> run_;
  TextPresenter presenter_{run_};
};

TEST_F(ShareRunTest, SharesAndRemembers) {
  startAndFinish();
  EXPECT_THAT(presenter_.lines, ElementsAre("session session-1", "over"));
  EXPECT_EQ(run_->result(), Result::shared);
  EXPECT_EQ(run_->sessionFate(), Fate::complete);
  EXPECT_EQ(run_->sentByteCount(), 34U);
  EXPECT_EQ(remembered(), State::complete);
  EXPECT_EQ(history_->newest()->arrivedFileCount, 2U);
}

TEST_F(ShareRunTest, ContinuesUnderTheSameLinkWhenTheNetworkFailsAtAnyStep) {
  for (const Call call : {Call::uploadUrl, Call::store, Call::finalize}) {
    for (const Reply& reply : {kNoReply, kBusy}) {
      SCOPED_TRACE(static_cast<int>(call));
      service_.answer(call, reply);
      start();
      finish([&](int attempt) {
        if (attempt == 2) service_.setHook(call, nullptr);
      });
      EXPECT_THAT(presenter_.lines, ElementsAre("session session-1", "wait 1", "wait 2", "over"));
      EXPECT_EQ(run_->result(), Result::shared);
      EXPECT_EQ(service_.storedBytes("item-1"), "content of file-1");
    }
  }
}

TEST_F(ShareRunTest, WaitsLongerEachTimeAndCountsAnewOnceAFileHasArrived) {
  service_.answer(Call::store, kNoReply);
  start();
  // The second file arrives in the third try, the first one never.
  finish([&](int attempt) { service_.answer(Call::store, kNoReply, attempt == 3 ? 1 : 0); });
  EXPECT_THAT(presenter_.lines,
              ElementsAre("session session-1", "wait 1", "wait 2", "wait 4", "wait 1", "wait 2",
                          "wait 4", "wait 8", "wait 16", "failed", "deleting", "over"));
  EXPECT_EQ(remembered(), State::deleted);
}

TEST_F(ShareRunTest, TriesAtOnceWhenAskedTo) {
  service_.answer(Call::store, kNoReply);
  start();
  waitFor(Phase::waiting);
  service_.setHook(Call::store, nullptr);
  EXPECT_EQ(run_->untilNextTry(), 1s);
  EXPECT_EQ(run_->attempt(), 1);
  pass(400ms);
  EXPECT_EQ(run_->untilNextTry(), 1s);
  EXPECT_EQ(run_->phase(), Phase::waiting);
  run_->retryNow();
  waitFor(Phase::over);
  EXPECT_EQ(run_->result(), Result::shared);
}

TEST_F(ShareRunTest, DoesNotTryAgainWhatIsRefusedForGood) {
  const std::tuple<Call, Reply, Lines> rows[] = {
      {Call::createSession, kGone, {"failed", "over"}},
      // It may have been created: a second one must not be.
      {Call::createSession, kNoReply, {"failed", "over"}},
      {Call::createSession, kBusy, {"failed", "over"}},
      {Call::uploadUrl, kGone, {"session session-1", "failed", "deleting", "over"}},
      {Call::store, kDenied, {"session session-1", "failed", "deleting", "over"}},
      {Call::finalize, kGone, {"session session-1", "failed", "deleting", "over"}},
  };
  for (const auto& [call, reply, lines] : rows) {
    service_.answer(call, reply);
    startAndFinish();
    EXPECT_EQ(presenter_.lines, lines);
    EXPECT_EQ(run_->result(), Result::failed);
    service_.setHook(call, nullptr);
  }
}

TEST_F(ShareRunTest, AFailureSaysWhichFileAndWhatBecameOfIt) {
  const std::pair<host::FailureCause, std::function<void()>> rows[] = {
      {host::FailureCause::storeDenied, [] {}},
      {host::FailureCause::fileGrew, [&] { folder_.write("file-2", "content of file-2 and"); }},
      {host::FailureCause::fileShrank, [&] { folder_.write("file-2", ""); }},
      {host::FailureCause::fileOverwritten, [&] { folder_.write("file-2", "CONTENT of file-2"); }},
      {host::FailureCause::fileVanished, [&] { std::filesystem::remove(second_); }},
  };
  for (const auto& [cause, act] : rows) {
    folder_.write("file-2", "content of file-2");
    std::filesystem::last_write_time(second_, std::filesystem::file_time_type());
    const std::size_t earlierCount = service_.requests(Call::store).size();
    const auto gate = service_.hold(Call::store, kDenied);
    start();
    waitForCall(Call::store, earlierCount);
    act();
    gate->open();
    finish();
    EXPECT_EQ(run_->failure()->fileIndex, 1U);
    EXPECT_EQ(run_->failure()->advice.cause, cause);
    EXPECT_THAT(run_->failure()->advice.whatFailed, HasSubstr("file-2"));
  }
}

TEST_F(ShareRunTest, AFailedShareStaysWhereItCanBeContinued) {
  EXPECT_EQ(leaveUnfinished().state, State::unfinished);
  EXPECT_THAT(presenter_.lines, ElementsAre("session session-1", "failed", "over"));
  EXPECT_EQ(run_->sessionFate(), Fate::unfinished);

  history_.reset();
  startAndFinish();
  EXPECT_EQ(run_->sessionFate(), Fate::deleted) << "no history could continue it";

  history_ = std::make_unique<History>(folder_ / "s/history.sqlite");
  presenter_.onLine = [this](const std::string&) {
    SQLite::Database history(folder_ / "s/history.sqlite", SQLite::OPEN_READWRITE);
    history.exec("DROP TABLE IF EXISTS file");
  };
  service_.answer(Call::store, kDenied, 1);
  startAndFinish();
  EXPECT_EQ(run_->sessionFate(), Fate::deleted) << "the history broke meanwhile";
}

TEST_F(ShareRunTest, CancellingEndsItInEveryPhase) {
  const std::tuple<const char*, Call, Lines, Fate> rows[] = {
      {"fingerprinting", Call::unknown, {"over"}, Fate::none},
      {"creating",
       Call::createSession,
       {"cancelling", "doomed session-1", "deleting", "over"},
       Fate::deleted},
      {"uploading", Call::store, {"session session-1", "deleting", "over"}, Fate::deleted},
      {"deleting", Call::deleteSession, {"session session-1", "deleting", "over"}, Fate::deleted},
  };
  for (const auto& [phase, held, lines, fate] : rows) {
    SCOPED_TRACE(phase);
    const std::size_t earlierCount = service_.requests(held).size();
    const auto gate = service_.hold(held);
    start();
    if (held == Call::deleteSession) {
      ASSERT_TRUE(waitUntil([&] { return run_->session().has_value(); }));
      run_->cancel();
    }
    if (held != Call::unknown) waitForCall(held, earlierCount);
    run_->cancel();
    gate->open();
    waitFor(Phase::over);
    EXPECT_EQ(presenter_.lines, lines);
    EXPECT_EQ(run_->result(), Result::cancelled);
    EXPECT_EQ(run_->sessionFate(), fate);
    service_.setHook(held, nullptr);
  }
}

TEST_F(ShareRunTest, ADeadlineEndsACleanUpWithoutAnAnswer) {
  const auto creation = service_.hold(Call::createSession);
  start();
  waitForCall(Call::createSession);
  run_->cancel();
  pass(1400ms);
  EXPECT_EQ(run_->phase(), Phase::cancelling);
  pass(200ms);
  EXPECT_EQ(run_->sessionFate(), Fate::perhapsMade);
  service_.setHook(Call::createSession, nullptr);

  const auto deletion = service_.hold(Call::deleteSession);
  service_.answer(Call::store, kDenied);
  start();
  waitFor(Phase::deleting);
  pass(9s);
  EXPECT_EQ(run_->phase(), Phase::deleting);
  run_->cancel();
  pass(1600ms);
  EXPECT_EQ(run_->sessionFate(), Fate::perhapsThere);
  EXPECT_EQ(run_->result(), Result::failed);
  EXPECT_EQ(remembered(), State::unfinished);
}

TEST_F(ShareRunTest, ACancelledCreationWithoutAReplyMayHaveMadeASession) {
  const auto gate = service_.hold(Call::createSession, test::Reply::none());
  start();
  waitForCall(Call::createSession);
  run_->cancel();
  gate->open();
  waitFor(Phase::over);
  EXPECT_EQ(run_->sessionFate(), Fate::perhapsMade);
}

TEST_F(ShareRunTest, AnUnconfirmedDeletionSaysWhy) {
  service_.answer(Call::deleteSession, kGone);
  service_.answer(Call::store, kDenied);
  startAndFinish();
  EXPECT_EQ(run_->sessionFate(), Fate::perhapsThere);
  EXPECT_EQ(run_->deletionFailure()->advice.cause, host::FailureCause::deletionRefused);
}

TEST_F(ShareRunTest, AContinuedShareIsNeverDeleted) {
  const RememberedShare share = leaveUnfinished();
  const auto continueIt = [&] {
    make(share, {1});
    run_->start();
  };
  continueIt();
  run_->cancel();
  EXPECT_EQ(run_->sessionFate(), Fate::unfinished);
  continueIt();
  EXPECT_EQ(remembered(), State::uploading);
  finish();
  EXPECT_EQ(run_->sessionFate(), Fate::unfinished);
  service_.setHook(Call::store, nullptr);
  continueIt();
  finish();
  EXPECT_EQ(run_->result(), Result::shared);
  EXPECT_THAT(presenter_.lines, ElementsAre("over"));
  EXPECT_EQ(run_->sentByteCount(), 34U);
  EXPECT_EQ(remembered(), State::complete);
  EXPECT_TRUE(service_.requests(Call::deleteSession).empty());
}

TEST_F(ShareRunTest, AChangedFileIsNamedBeforeAnythingIsUploaded) {
  const RememberedShare share = leaveUnfinished();
  service_.setHook(Call::store, nullptr);
  const std::size_t earlierCount = service_.calls().size();
  make(share, {});
  folder_.write("file-1", "another one");
  run_->start();
  finish();
  EXPECT_THAT(run_->failure()->advice.whatFailed,
              AllOf(HasSubstr("was not continued"), HasSubstr("file-1")));
  EXPECT_EQ(service_.calls().size(), earlierCount);

  // The change was made before the run began.
  make(share, {1});
  run_->start();
  finish();
  EXPECT_EQ(run_->failure()->advice.cause, host::FailureCause::fileChanged);
}

TEST_F(ShareRunTest, ALinkThatReachesNoReaderIsGivenUp) {
  settings_.keepsUnfinishedSession = true;
  presenter_.onLine = [this](const std::string& line) {
    if (line.ends_with("session-1")) run_->giveUp();
  };
  for (const bool isCreating : {true, false}) {
    const auto gate = service_.hold(Call::createSession);
    start();
    waitForCall(Call::createSession);
    if (isCreating) run_->cancel();
    gate->open();
    waitFor(Phase::over);
    EXPECT_EQ(run_->result(), isCreating ? Result::cancelled : Result::failed);
    EXPECT_EQ(run_->sessionFate(), Fate::deleted);
  }
}

TEST_F(ShareRunTest, MayBeReleasedInAnyCall) {
  service_.answer(Call::store, kDenied);
  for (const std::string call : {"session session-1", "failed", "deleting"}) {
    presenter_.onLine = [&](const std::string& line) {
      if (line == call) run_.reset();
    };
    start();
    EXPECT_TRUE(waitUntil([&] { return run_ == nullptr; })) << call;
    drainMainQueue();
  }
}

}  // namespace
}  // namespace quillbay::test
