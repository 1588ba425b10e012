#include "ProgramTest.h"

namespace quillbay::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

class OnTerminal : public ProgramTest {
 protected:
  std::unique_ptr<ChildProcess> startAsking() {
    auto program =
        start({.arguments = {"share", "--ask-password", file_}, .error = Stream::terminal});
    EXPECT_TRUE(program->waitToShow("Password for the link: "));
    return program;
  }
};

TEST_F(OnTerminal, theBarCountsFilesAndGoesAwayBeforeTheSummary) {
  const std::string other = folder_.writePattern("other", 1'000'000);
  const auto program =
      startStalled(Call::store, {.arguments = {"share", file_, other}, .error = Stream::terminal});
  ASSERT_TRUE(program->waitToShow("\x1b[32m\u2588")) << program->terminal();
  // The cursor returns to the beginning, so that the bar can be erased in a narrower window.
  ASSERT_TRUE(program->waitToShow("0:00 elapsed\x1b[J\r\r"));
  gate_->open();
  EXPECT_EQ(program->waitForExit(), 0);
  EXPECT_EQ(program->output(), link_);
  const std::string& text = program->terminal();
  const std::size_t summary = text.find("\r\x1b[JShared 2 files (1.0 MB) in ");
  ASSERT_NE(summary, std::string::npos) << text;
  EXPECT_THAT(text, EndsWith(".\r\n"));
  EXPECT_EQ(text.find('\x1b', summary + 2), std::string::npos) << text;
}

TEST_F(OnTerminal, theLinkHasItsLineToItself) {
  const auto program = startStalled(
      Call::store,
      {.arguments = {"share", file_}, .output = Stream::terminal, .error = Stream::terminal});
  ASSERT_TRUE(program->waitToShow("0 of 1 file"));
  const std::string& text = program->terminal();
  const std::size_t link = text.find(FakeService::link);
  ASSERT_NE(link, std::string::npos);
  EXPECT_TRUE(link == 0 || text.substr(0, link).ends_with("\r\x1b[J")) << text;
  EXPECT_EQ(text.substr(link + std::string(FakeService::link).size(), 2), "\r\n");
}

TEST_F(OnTerminal, quietAndTerminalsWithoutCursorShowNothing) {
  const Setup rows[] = {{.arguments = {"share", file_, "--quiet"}},
                        {.arguments = {"share", file_}, .environment = {"TERM=dumb"}}};
  for (Setup setup : rows) {
    setup.error = Stream::terminal;
    EXPECT_EQ(run(0, setup)->terminal(), "");
  }
}

TEST_F(OnTerminal, thePasswordIsAskedForTwiceAndDoesNotShow) {
  const auto program = startAsking();
  program->type("ses\n");
  ASSERT_TRUE(program->waitToShow("at least 4 characters\r\nPassword"));
  program->type("sesame\n");
  ASSERT_TRUE(program->waitToShow("The same again: "));
  program->type("sesam\n");
  ASSERT_TRUE(program->waitToShow("They differ. Please try again.\r\nPassword"));
  program->type("sesame\n");
  ASSERT_TRUE(program->waitUntil([&] {
    return program->terminal().find("The same again: ") !=
           program->terminal().rfind("The same again: ");
  }));
  program->type("sesame\n");
  EXPECT_EQ(program->waitForExit(), 0) << program->terminal();
  EXPECT_THAT(program->terminal(), Not(HasSubstr("ses")));
  EXPECT_TRUE(program->terminalEchoes());
  EXPECT_EQ(sentPassword(), "c2VzYW1l");
}

TEST_F(OnTerminal, theEndOfThePromptGivesTheEchoBack) {
  const struct {
    const char* keys;
    int status;
    const char* shown;
  } rows[] = {{"ses\x03", 130, "link: \r\n"}, {"\x04", 2, "link: \r\nquillbay: nothing was"}};
  for (const auto& row : rows) {
    const auto program = startAsking();
    EXPECT_FALSE(program->terminalEchoes());
    program->type(row.keys);
    EXPECT_EQ(program->waitForExit(), row.status);
    EXPECT_THAT(program->terminal(), HasSubstr(row.shown));
    EXPECT_TRUE(program->terminalEchoes());
  }
  EXPECT_TRUE(service_.calls().empty());
}

TEST_F(OnTerminal, thePasswordStaysHiddenAfterAStop) {
  const auto program = startAsking();
  // As a shell does between Ctrl-Z and `fg`.
  program->signal(SIGSTOP);
  program->turnEchoOn();
  program->signal(SIGCONT);
  EXPECT_TRUE(program->waitUntil([&] { return !program->terminalEchoes(); }));
}

TEST_F(OnTerminal, aPasswordTypedOnStandardInputDoesNotShow) {
  const auto program = start({.arguments = {"share", "--password-file", "-", file_},
                              .error = Stream::terminal,
                              .input = {}});
  ASSERT_TRUE(program->waitToShow("The password: "));
  EXPECT_FALSE(program->terminalEchoes());
  program->type("sesame\n");
  EXPECT_EQ(program->waitForExit(), 0);
  EXPECT_EQ(sentPassword(), "c2VzYW1l");
}

}  // namespace
}  // namespace quillbay::test
