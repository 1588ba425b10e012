#include "ProgramTest.h"

namespace quillbay::test {
namespace {

class HistoryCommands : public ProgramTest {
 protected:
  /// A share of two files of which the second has arrived; its program was killed.
  void leaveUnfinished() {
    stall(Call::store, 1);
    const auto program = start("quillbay share file other");
    ASSERT_TRUE(program->waitUntil([&] { return count(Call::store) == 2; })) << program->error();
    program->signal(SIGKILL);
    EXPECT_EQ(program->waitForExit(), 1000 + SIGKILL);
    service_.setHook(Call::store, nullptr);
  }
  std::string list(const std::string& options = "") {
    return run(0, "quillbay list " + options)->output();
  }
};

TEST_F(HistoryCommands, aShareThatWasKilledIsContinuedUnderItsLink) {
  leaveUnfinished();
  EXPECT_THAT(list(), AllOf(HasSubstr("unfinished  1 of 2  11 bytes  never           https://"),
                            HasSubstr("LINK\n")));
  const auto lines = events(*run(0, "quillbay resume --last --json"));
  EXPECT_EQ(lines.front().at("url"), FakeService::link);
  EXPECT_EQ(lines.back(), json({{"event", "done"}}));
  EXPECT_EQ(service_.storedBytes("item-1"), "content");
  EXPECT_EQ(count(Call::store), 3U) << "the second file had arrived";
  EXPECT_EQ(json::parse(list("--json")).at("state"), "complete");

  EXPECT_EQ(run(0, "quillbay resume " + link_)->output(), link_ + "\n");
  EXPECT_EQ(count(Call::store), 3U) << "nothing was left";
  EXPECT_THAT(run(2, "quillbay resume --last")->error(), HasSubstr("no share is unfin"));
}

TEST_F(HistoryCommands, aShareInUseCanNeitherBeContinuedNorForgotten) {
  const auto program = startStalled(Call::store, "quillbay share file");
  for (const std::string command : {"resume ", "forget "}) {
    EXPECT_THAT(run(2, "quillbay " + command + link_)->error(),
                HasSubstr("another program is uploading"));
  }
  gate_->open();
  EXPECT_EQ(program->waitForExit(), 0);
}

TEST_F(HistoryCommands, aContinuedShareSurvivesFailureAndCancellation) {
  leaveUnfinished();
  folder_.write("file", "changed");
  EXPECT_THAT(run(1, "quillbay resume session-1")->error(),
              AllOf(HasSubstr("the share was not continued: '" + file_ + "' has changed"),
                    HasSubstr("unfinished: 1 of 2 files uploaded"),
                    HasSubstr("quillbay delete '" + link_)));
  folder_.write("file", "content");
  const auto stalled = startStalled(Call::store, "quillbay resume session-1 --json");
  interrupt(*stalled);
  EXPECT_EQ(events(*stalled).back(), json({{"event", "cancelled"}}));
  EXPECT_EQ(count(Call::deleteSession), 0U);
}

TEST_F(HistoryCommands, deletesAndForgetsWhatItRemembers) {
  run(0, "quillbay share --instance office file");
  EXPECT_THAT(run(2, "quillbay delete https://x/unknown --token t")->error(),
              HasSubstr("'https://x/unknown' is not in the history"));
  run(2, "quillbay delete unknown");
  run(0, "quillbay delete " + link_);
  EXPECT_THAT(service_.requests(Call::deleteSession).at(0).target(), HasSubstr("/cloud/office/"));
  EXPECT_EQ(service_.calls().back(), "delete session-1");

  EXPECT_EQ(list(), "");
  EXPECT_THAT(list("--all"), HasSubstr("deleted"));
  EXPECT_THAT(run(2, "quillbay delete --last")->error(), HasSubstr("deleted before"));
  run(0, "quillbay forget --expired");
  EXPECT_EQ(list("--all"), "");
}

TEST_F(HistoryCommands, aHistoryThatCannotBeUsedStopsOnlyTheCommandsThatNeedIt) {
  std::filesystem::create_directories(folder_ / "state");
  folder_.write("state/quillbay", "no folder");
  const auto program = run(0, "quillbay share file");
  EXPECT_EQ(program->output(), link_ + "\n");
  EXPECT_THAT(program->error(), testing::MatchesRegex("quillbay: the history [^\n]*\n"));
  EXPECT_EQ(run(0, "quillbay share --quiet file")->error(), "");
  EXPECT_EQ(run(0, "quillbay share --no-history file")->error(), "");
  run(0, "quillbay delete session-1 --token token-of-session-1");
  for (const std::string command : {"list", "resume --last", "delete --last", "forget --expired"}) {
    EXPECT_THAT(run(1, "quillbay " + command)->error(), HasSubstr("cannot be used"));
  }
}

class Retry : public ProgramTest {};

TEST_F(Retry, aLostConnectionIsTriedAgainUnderTheSameLink) {
  service_.answer(Call::store, Reply::none());
  const auto program = start("quillbay share file --json 2>/dev/tty");
  ASSERT_TRUE(program->waitToShow("store unanswered; next try in 1 s (1 of 5); Ctrl-C cancels"));
  service_.setHook(Call::store, nullptr);
  EXPECT_EQ(program->waitForExit(), 0);
  const json retry{{"event", "retry"}, {"in", 1}, {"attempt", 1}, {"cause", "store-unanswered"}};
  EXPECT_THAT(events(*program), testing::Contains(retry));
  EXPECT_EQ(count(Call::createSession), 1U);
}

TEST_F(Retry, verboseTellsOfATryWhereThereIsNoStatusLine) {
  service_.answer(Call::store, Reply::none());
  const auto program = start("quillbay share file --verbose");
  EXPECT_TRUE(program->waitUntil(
      [&] { return program->error().contains("; next try in 1 s (1 of 5)\n"); }));
  interrupt(*program);
  const std::size_t before = count(Call::store);
  const auto silent = start("quillbay share file --no-history");
  EXPECT_TRUE(silent->waitUntil([&] { return count(Call::store) == before + 2; }));
  interrupt(*silent);
  EXPECT_EQ(silent->error(), "");
}

TEST_F(Retry, aFailureOnATerminalLeavesTheShareToBeContinued) {
  service_.answer(Call::store, FakeService::storeRefusal());
  EXPECT_THAT(run(1, "quillbay share file 2>/dev/tty")->terminal(),
              AllOf(HasSubstr("0 of 1 file uploaded; to continue it: quillbay resume 'https://"),
                    HasSubstr("to delete it: quillbay delete 'https://"), Not(HasSubstr("token"))));
  EXPECT_EQ(count(Call::deleteSession), 0U);
  run(1, "quillbay share file --no-history 2>/dev/tty");
  EXPECT_EQ(count(Call::deleteSession), 1U);
}

}  // namespace
}  // namespace quillbay::test
