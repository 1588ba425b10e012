#include "ProgramTest.h"

namespace quillbay::test {
namespace {

// Nothing here is timed: what the program must not wait for never comes.
using Interrupted = ProgramTest;

TEST_F(Interrupted, aStalledUploadIsGivenUpAndItsSessionDeleted) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    SCOPED_TRACE(signal);
    const auto program = startStalled(Call::store, "quillbay share --json file");
    program->signal(signal);
    EXPECT_EQ(program->waitForExit(), 130);
    EXPECT_EQ(count(Call::deleteSession), count(Call::createSession));
    EXPECT_EQ(events(*program).back(), json({{"event", "deleted"}}));
    EXPECT_EQ(program->error(), "");
  }
}

TEST_F(Interrupted, keepLeavesTheSessionAndTellsHowToDeleteIt) {
  const auto program =
      startStalled(Call::store, "quillbay share --keep --no-history --instance \"it's\" file");
  interrupt(*program);
  EXPECT_EQ(count(Call::deleteSession), 0U);
  EXPECT_THAT(program->error(),
              HasSubstr(R"(run: printf '%s\n' 'token-of-session-1' | quillbay delete )"
                        R"(--instance 'it'\''s' --token-file - -- 'session-1')"));
}

TEST_F(Interrupted, aSessionThatIsCreatedAfterwardsIsDeleted) {
  const auto program = startStalled(Call::createSession, "quillbay share file 2>/dev/tty");
  program->signal(SIGINT);
  ASSERT_TRUE(program->waitToShow("Cancelling..."));
  gate_->open();
  EXPECT_EQ(program->waitForExit(), 130);
  EXPECT_EQ(service_.calls(), (std::vector<std::string>{"create", "delete session-1"}));
  EXPECT_EQ(program->output(), "");
}

TEST_F(Interrupted, aRequestWithoutReplyDoesNotHoldTheEndUpAndIsSaidToBeOpen) {
  const auto creation = startStalled(Call::createSession, "quillbay share file");
  interrupt(*creation);
  EXPECT_THAT(creation->error(), HasSubstr("has not answered"));
  const auto deletion =
      startStalled(Call::deleteSession, "quillbay delete session-1 --token token-of-session-1");
  interrupt(*deletion);
  EXPECT_THAT(deletion->error(), HasSubstr("may be deleted, or not"));
}

TEST_F(Interrupted, hashingIsGivenUp) {
  folder_.writeSparse("large", std::uint64_t{1} << 42);
  const auto program = start("quillbay share large 2>/dev/tty");
  ASSERT_TRUE(program->waitToShow("Fingerprinting 1 file (4.4 TB)"));
  program->type("\x03");
  EXPECT_EQ(program->waitForExit(), 130);
  EXPECT_THAT(program->terminal(), HasSubstr("cancelled; nothing was shared"));
  EXPECT_TRUE(service_.calls().empty());
}

TEST_F(Interrupted, aSignalThatTheCallerIgnoresStaysIgnored) {
  const auto program =
      startStalled(Call::store, "sh -c \"trap '' HUP INT; exec quillbay share file\"");
  program->signal(SIGHUP);
  program->signal(SIGINT);
  gate_->open();
  EXPECT_EQ(program->waitForExit(), 0);
}

}  // namespace
}  // namespace quillbay::test
