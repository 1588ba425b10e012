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
  void sessionCreated(const cloud::Session& session, bool isDoomed) override {
    lines.push_back((isDoomed ? "doomed " : "session ") + session.identifier());
    if (onSession) onSession();
  }
  void failed(const ShareRun::Failure& /*failure*/) override { lines.emplace_back("failed"); }
  void phaseChanged() override {
    if (run == nullptr) return;
    if (run->phase() == Phase::waiting) {
      lines.push_back("wait " + std::to_string(run->untilNextTry().count()));
    }
    if (run->phase() == Phase::cancelling) lines.emplace_back("cancelling");
    if (run->phase() == Phase::deleting) lines.emplace_back("deleting");
    if (run->phase() == Phase::over) lines.emplace_back("over");
  }

  const ShareRun* run = nullptr;
  std::function<void()> onSession;
  Lines lines;
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
    presenter_.run = run_.get();
  }
  /// Of all its waits; the network recovers before the try `attempt`.
  void runToEnd(int attempt = 100) {
    make();
    run_->start();
    ASSERT_TRUE(waitForEnd(attempt));
  }
  /// Makes a run that continues `share`, of which a file may have arrived.
  void makeContinued(const RememberedShare& share, const std::vector<std::size_t>& arrived) {
    make();
    run_->continueFrom({share.session, arrived, share.identifier});
  }
  RememberedShare leaveUnfinished() {
    settings_.keepsUnfinishedSession = true;
    service_.answer(Call::store, kDenied);
    runToEnd();
    return *history_->newest();
  }
  [[nodiscard]] bool waitFor(Phase phase) {
    return waitUntil([&] { return run_->phase() == phase; });
  }
  [[nodiscard]] bool waitForCall(Call call) {
    return waitUntil([&] { return !service_.requests(call).empty(); });
  }
  /// Lets every wait pass until the run is over. The network recovers before the try `attempt`.
  [[nodiscard]] bool waitForEnd(int attempt = 100) {
    return waitUntil([this, attempt] {
      if (run_->phase() != Phase::waiting) return run_->phase() == Phase::over;
      if (run_->attempt() == attempt) recover();
      pass(run_->untilNextTry());
      return false;
    });
  }
  void recover() {
    for (const Call call : {Call::uploadUrl, Call::store, Call::finalize}) {
      service_.setHook(call, nullptr);
    }
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
  std::atomic<bool> isRecovered_ = false;
  TextPresenter presenter_;
  std::unique_ptr<History> history_ = std::make_unique<History>(folder_ / "s/history.sqlite");
  std::unique_ptr<ShareRun> run_;
};

TEST_F(ShareRunTest, SharesAndRemembers) {
  runToEnd();
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
      runToEnd(2);
      EXPECT_THAT(presenter_.lines, ElementsAre("session session-1", "wait 1", "wait 2", "over"));
      EXPECT_EQ(run_->result(), Result::shared);
      EXPECT_EQ(service_.storedBytes("item-1"), "content of file-1");
    }
  }
}

TEST_F(ShareRunTest, WaitsLongerEachTimeAndCountsAnewOnceAFileHasArrived) {
  make();
  // The first file arrives in the third try, the second one never.
  service_.setHook(Call::store, [this](const Request& request, const Reply& ordinary) {
    const bool isFirstFile = request.target().contains("item-2");
    return isFirstFile && isRecovered_ ? ordinary : kNoReply;
  });
  run_->start();
  ASSERT_TRUE(waitUntil([this] {
    if (run_->phase() != Phase::waiting) return run_->phase() == Phase::over;
    isRecovered_ = run_->attempt() == 3;
    pass(run_->untilNextTry());
    return false;
  }));
  EXPECT_THAT(presenter_.lines,
              ElementsAre("session session-1", "wait 1", "wait 2", "wait 4", "wait 1", "wait 2",
                          "wait 4", "wait 8", "wait 16", "failed", "deleting", "over"));
  EXPECT_EQ(remembered(), State::deleted);
}

TEST_F(ShareRunTest, TriesAtOnceWhenAskedTo) {
  service_.answer(Call::store, kNoReply);
  make();
  run_->start();
  ASSERT_TRUE(waitFor(Phase::waiting));
  recover();
  EXPECT_EQ(run_->untilNextTry(), 1s);
  EXPECT_EQ(run_->attempt(), 1);
  pass(400ms);
  EXPECT_EQ(run_->untilNextTry(), 1s);
  EXPECT_EQ(run_->phase(), Phase::waiting);
  run_->retryNow();
  ASSERT_TRUE(waitFor(Phase::over));
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
    runToEnd();
    EXPECT_EQ(presenter_.lines, lines);
    EXPECT_EQ(run_->result(), Result::failed);
    service_.setHook(call, nullptr);
  }
}

TEST_F(ShareRunTest, AFailureSaysWhichFileAndWhatBecameOfIt) {
  const auto gate = service_.hold(Call::store, kDenied);
  make();
  run_->start();
  ASSERT_TRUE(waitForCall(Call::store));
  folder_.write("file-2", "content of file-2 and more");
  gate->open();
  ASSERT_TRUE(waitForEnd());
  EXPECT_EQ(run_->failure()->fileIndex, 1U);
  EXPECT_EQ(run_->failure()->advice.cause, host::FailureCause::fileGrew);
  EXPECT_THAT(run_->failure()->advice.whatFailed, HasSubstr("file-2"));
}

TEST_F(ShareRunTest, AFailedShareStaysWhereItCanBeContinued) {
  EXPECT_EQ(leaveUnfinished().state, State::unfinished);
  EXPECT_THAT(presenter_.lines, ElementsAre("session session-1", "failed", "over"));
  EXPECT_EQ(run_->sessionFate(), Fate::unfinished);

  history_.reset();
  runToEnd();
  EXPECT_EQ(run_->sessionFate(), Fate::deleted) << "no history could continue it";

  history_ = std::make_unique<History>(folder_ / "s/history.sqlite");
  presenter_.onSession = [this] {
    SQLite::Database(folder_ / "s/history.sqlite", SQLite::OPEN_READWRITE).exec("DROP TABLE file");
  };
  service_.answer(Call::store, kDenied, 1);
  runToEnd();
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
    make();
    run_->start();
    const auto isHeld = [&, held = held] { return service_.requests(held).size() > earlierCount; };
    if (held == Call::deleteSession) {
      ASSERT_TRUE(waitUntil([&] { return run_->session().has_value(); }));
      run_->cancel();
    }
    ASSERT_TRUE(held == Call::unknown || waitUntil(isHeld));
    run_->cancel();
    gate->open();
    ASSERT_TRUE(waitFor(Phase::over));
    EXPECT_EQ(presenter_.lines, lines);
    EXPECT_EQ(run_->result(), Result::cancelled);
    EXPECT_EQ(run_->sessionFate(), fate);
    service_.setHook(held, nullptr);
  }
}

TEST_F(ShareRunTest, ADeadlineEndsACleanUpWithoutAnAnswer) {
  const auto creation = service_.hold(Call::createSession);
  make();
  run_->start();
  ASSERT_TRUE(waitForCall(Call::createSession));
  run_->cancel();
  pass(1400ms);
  EXPECT_EQ(run_->phase(), Phase::cancelling);
  pass(200ms);
  EXPECT_EQ(run_->sessionFate(), Fate::perhapsMade);
  service_.setHook(Call::createSession, nullptr);

  const auto deletion = service_.hold(Call::deleteSession);
  service_.answer(Call::store, kDenied);
  make();
  run_->start();
  ASSERT_TRUE(waitFor(Phase::deleting));
  pass(9s);
  EXPECT_EQ(run_->phase(), Phase::deleting);
  run_->cancel();
  pass(1600ms);
  EXPECT_EQ(run_->sessionFate(), Fate::perhapsThere);
  EXPECT_EQ(run_->result(), Result::failed);
  EXPECT_EQ(remembered(), State::unfinished);
}

TEST_F(ShareRunTest, AnUnconfirmedDeletionSaysWhy) {
  service_.answer(Call::deleteSession, kGone);
  service_.answer(Call::store, kDenied);
  runToEnd();
  EXPECT_EQ(run_->sessionFate(), Fate::perhapsThere);
  EXPECT_EQ(run_->deletionFailure()->advice.cause, host::FailureCause::deletionRefused);
}

TEST_F(ShareRunTest, AContinuedShareIsNeverDeleted) {
  const RememberedShare share = leaveUnfinished();
  const auto continueIt = [&] {
    makeContinued(share, {1});
    run_->start();
  };
  continueIt();
  run_->cancel();
  EXPECT_EQ(run_->sessionFate(), Fate::unfinished);
  continueIt();
  EXPECT_EQ(remembered(), State::uploading);
  ASSERT_TRUE(waitForEnd());
  EXPECT_EQ(run_->sessionFate(), Fate::unfinished);
  service_.setHook(Call::store, nullptr);
  continueIt();
  ASSERT_TRUE(waitForEnd());
  EXPECT_EQ(run_->result(), Result::shared);
  EXPECT_THAT(presenter_.lines, ElementsAre("over"));
  EXPECT_EQ(run_->sentByteCount(), 34U);
  EXPECT_EQ(remembered(), State::complete);
  EXPECT_TRUE(service_.requests(Call::deleteSession).empty());
}

TEST_F(ShareRunTest, AChangedFileIsNamedBeforeAnythingIsUploaded) {
  const RememberedShare share = leaveUnfinished();
  recover();
  const std::size_t earlierCount = service_.calls().size();
  makeContinued(share, {});
  folder_.write("file-1", "another one");
  run_->start();
  ASSERT_TRUE(waitForEnd());
  EXPECT_THAT(run_->failure()->advice.whatFailed,
              AllOf(HasSubstr("was not continued"), HasSubstr("file-1")));
  EXPECT_EQ(service_.calls().size(), earlierCount);

  // The change was made before the run began.
  makeContinued(share, {1});
  run_->start();
  ASSERT_TRUE(waitForEnd());
  EXPECT_EQ(run_->failure()->advice.cause, host::FailureCause::fileChanged);
}

TEST_F(ShareRunTest, ALinkThatReachesNoReaderIsGivenUp) {
  settings_.keepsUnfinishedSession = true;
  for (const bool isCreating : {true, false}) {
    make();
    presenter_.onSession = [this] { run_->giveUp(); };
    const auto gate = service_.hold(Call::createSession);
    run_->start();
    ASSERT_TRUE(waitForCall(Call::createSession));
    if (isCreating) run_->cancel();
    gate->open();
    ASSERT_TRUE(waitFor(Phase::over));
    EXPECT_EQ(run_->result(), isCreating ? Result::cancelled : Result::failed);
    EXPECT_EQ(run_->sessionFate(), Fate::deleted);
  }
}

TEST_F(ShareRunTest, MayBeReleasedInAnyCall) {
  for (int call = 0; call < 3; ++call) {
    class Releaser final : public ShareRun::Presenter {
     public:
      void sessionCreated(const cloud::Session&, bool) override { release(0); }
      void failed(const ShareRun::Failure&) override { release(1); }
      void phaseChanged() override {
        if (run && run->phase() == Phase::deleting) release(2);
      }
      void release(int place) {
        if (place == when) run.reset();
      }
      int when = 0;
      std::unique_ptr<ShareRun> run;
    } releaser;
    releaser.when = call;
    service_.answer(Call::store, kDenied);
    releaser.run =
        std::make_unique<ShareRun>("host-1", cloud::SessionConfiguration::default_(),
                                   host::SharedFiles({first_}), settings_, nullptr, releaser);
    releaser.run->start();
    EXPECT_TRUE(waitUntil([&] { return releaser.run == nullptr; }));
    drainMainQueue();
  }
}

}  // namespace
}  // namespace quillbay::test
