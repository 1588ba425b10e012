#include <filesystem>

#include "ProgramTest.h"

namespace quillbay::test {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

const Reply kNoReply = Reply::none();
const Reply kDenied{.status = 403,
                    .body = "<Error><Code>AccessDenied</Code><Message>No</Message></Error>"};

class HistoryCommands : public ProgramTest {
 protected:
  /// A share of two files of which the second has arrived; its program was killed.
  void leaveUnfinished() {
    gate_ = std::make_shared<Gate>();
    service_.setHook(Call::store, [gate = gate_](const Request& request, Reply ordinary) {
      if (request.target().contains("item-1")) ordinary.sendAfter = gate;
      return ordinary;
    });
    const auto program = start({.arguments = {"share", file_, other_}});
    ASSERT_TRUE(program->waitUntil([&] { return count(Call::store) == 2; })) << program->error();
    program->signal(SIGKILL);
    EXPECT_EQ(program->waitForExit(), 1000 + SIGKILL);
    service_.setHook(Call::store, nullptr);
  }
  std::string list(std::vector<std::string> options = {}) {
    options.insert(options.begin(), "list");
    return run(0, {.arguments = options})->output();
  }

  const std::string other_ = folder_.write("other", "more");
};

TEST_F(HistoryCommands, aShareThatWasKilledIsContinuedUnderItsLink) {
  leaveUnfinished();
  EXPECT_THAT(list(), AllOf(HasSubstr("unfinished  1 of 2  11 bytes  never           https://"),
                            HasSubstr("LINK\n")));
  const auto program = run(0, {.arguments = {"resume", "--last", "--json"}});
  const auto lines = events(*program);
  EXPECT_EQ(lines.front().at("url"), FakeService::link);
  EXPECT_EQ(lines.back(), json({{"event", "done"}}));
  EXPECT_EQ(service_.storedBytes("item-1"), "content");
  EXPECT_EQ(count(Call::store), 3U) << "the second file had arrived";
  EXPECT_EQ(json::parse(list({"--json"})).at("state"), "complete");

  EXPECT_EQ(run(0, {.arguments = {"resume", FakeService::link}})->output(), link_);
  EXPECT_EQ(count(Call::store), 3U) << "nothing was left";
  EXPECT_THAT(run(2, {.arguments = {"resume", "--last"}})->error(), HasSubstr("no share is unfin"));
}

TEST_F(HistoryCommands, aShareInUseCanNeitherBeContinuedNorForgotten) {
  const auto program = startStalled(Call::store, {.arguments = {"share", file_}});
  for (const char* command : {"resume", "forget"}) {
    const auto second = run(2, {.arguments = {command, FakeService::link}});
    EXPECT_THAT(second->error(), HasSubstr("another program is uploading"));
  }
  gate_->open();
  EXPECT_EQ(program->waitForExit(), 0);
}

TEST_F(HistoryCommands, aContinuedShareSurvivesFailureAndCancellation) {
  leaveUnfinished();
  folder_.write("file", "changed");
  const auto changed = run(1, {.arguments = {"resume", "session-1"}});
  EXPECT_THAT(changed->error(),
              AllOf(HasSubstr("the share was not continued: '" + file_ + "' has changed"),
                    HasSubstr("unfinished: 1 of 2 files uploaded"),
                    HasSubstr("quillbay delete '" + std::string(FakeService::link))));
  folder_.write("file", "content");
  const auto stalled = start({.arguments = {"resume", "session-1", "--json"}});
  stall(Call::store);
  ASSERT_TRUE(stalled->waitUntil([&] { return count(Call::uploadUrl) == 3; }));
  interrupt(*stalled);
  EXPECT_EQ(events(*stalled).back(), json({{"event", "cancelled"}}));
  EXPECT_EQ(count(Call::deleteSession), 0U);
}

TEST_F(HistoryCommands, deletesAndForgetsWhatItRemembers) {
  run(0, {.arguments = {"share", "--instance", "office", file_}});
  const auto unknown = run(2, {.arguments = {"delete", "https://x/unknown", "--token", "t"}});
  EXPECT_THAT(unknown->error(), HasSubstr("'https://x/unknown' is not in the history"));
  run(2, {.arguments = {"delete", "unknown"}});
  run(0, {.arguments = {"delete", FakeService::link}});
  const Request deletion = service_.requests(Call::deleteSession).at(0);
  EXPECT_THAT(deletion.target(), HasSubstr("/cloud/office/"));
  EXPECT_EQ(service_.calls().back(), "delete session-1");

  EXPECT_EQ(list(), "");
  EXPECT_THAT(list({"--all"}), HasSubstr("deleted"));
  EXPECT_THAT(run(2, {.arguments = {"delete", "--last"}})->error(), HasSubstr("deleted before"));
  run(0, {.arguments = {"forget", "--expired"}});
  EXPECT_EQ(list({"--all"}), "");
}

TEST_F(HistoryCommands, aHistoryThatCannotBeUsedStopsOnlyTheCommandsThatNeedIt) {
  std::filesystem::create_directories(state_);
  folder_.write("state/quillbay", "no folder");
  const auto program = run(0, {.arguments = {"share", file_}});
  EXPECT_EQ(program->output(), link_);
  EXPECT_THAT(program->error(), testing::MatchesRegex("quillbay: the history [^\n]*\n"));
  EXPECT_EQ(run(0, {.arguments = {"share", "--quiet", file_}})->error(), "");
  EXPECT_EQ(run(0, {.arguments = {"share", "--no-history", file_}})->error(), "");
  run(0, {.arguments = {"delete", "session-1", "--token", FakeService::token}});
  for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
           {"list"}, {"resume", "--last"}, {"delete", "--last"}, {"forget", "--expired"}}) {
    EXPECT_THAT(run(1, {.arguments = arguments})->error(), HasSubstr("cannot be used"));
  }
}

class Retry : public ProgramTest {};

TEST_F(Retry, aLostConnectionIsTriedAgainUnderTheSameLink) {
  service_.answer(Call::store, kNoReply);
  const auto program = start({.arguments = {"share", file_, "--json"}, .error = Stream::terminal});
  ASSERT_TRUE(program->waitToShow("store unanswered; next try in 1 s (1 of 5); Ctrl-C cancels"));
  service_.setHook(Call::store, nullptr);
  EXPECT_EQ(program->waitForExit(), 0);
  EXPECT_THAT(events(*program),
              testing::Contains(json(
                  {{"event", "retry"}, {"in", 1}, {"attempt", 1}, {"cause", "store-unanswered"}})));
  EXPECT_EQ(count(Call::createSession), 1U);
}

TEST_F(Retry, verboseTellsOfATryWhereThereIsNoStatusLine) {
  service_.answer(Call::store, kNoReply);
  const auto program = start({.arguments = {"share", file_, "--verbose"}});
  EXPECT_TRUE(program->waitUntil(
      [&] { return program->error().contains("; next try in 1 s (1 of 5)\n"); }));
  const auto silent = start({.arguments = {"share", file_, "--no-history"}});
  EXPECT_TRUE(silent->waitUntil([&] { return count(Call::store) > 2; }));
  interrupt(*silent);
  EXPECT_EQ(silent->error(), "");
}

TEST_F(Retry, aFailureOnATerminalLeavesTheShareToBeContinued) {
  service_.answer(Call::store, kDenied);
  const auto kept = run(1, {.arguments = {"share", file_}, .error = Stream::terminal});
  EXPECT_THAT(kept->terminal(),
              AllOf(HasSubstr("0 of 1 file uploaded; to continue it: quillbay resume 'https://"),
                    HasSubstr("to delete it: quillbay delete 'https://"), Not(HasSubstr("token"))));
  EXPECT_EQ(count(Call::deleteSession), 0U);
  run(1, {.arguments = {"share", file_, "--no-history"}, .error = Stream::terminal});
  EXPECT_EQ(count(Call::deleteSession), 1U);
}

}  // namespace
}  // namespace quillbay::test
