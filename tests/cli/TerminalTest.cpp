#include "ProgramTest.h"

namespace quillbay::test {
namespace {

class OnTerminal : public ProgramTest {
 protected:
  Program startAsking() {
    auto program = start("quillbay share --ask-password file 2>/dev/tty");
    EXPECT_TRUE(program->waitToShow("Password for the link: "));
    return program;
  }
};

TEST_F(OnTerminal, theBarCountsFilesAndGoesAwayBeforeTheSummary) {
  folder_.writePattern("large", 1'000'000);
  const auto program = startStalled(Call::store, "quillbay share file large 2>/dev/tty");
  ASSERT_TRUE(program->waitToShow("\x1b[32m\u2588")) << program->terminal();
  // The cursor returns to the beginning, so that the bar can be erased in a narrower window.
  ASSERT_TRUE(program->waitToShow("0:00 elapsed\x1b[J\r\r"));
  gate_->open();
  EXPECT_EQ(program->waitForExit(), 0);
  EXPECT_EQ(program->output(), link_ + "\n");
  const std::string& text = program->terminal();
  const std::size_t summary = text.find("\r\x1b[JShared 2 files (1.0 MB) in ");
  ASSERT_NE(summary, std::string::npos) << text;
  EXPECT_THAT(text, EndsWith(".\r\n"));
  EXPECT_EQ(text.find('\x1b', summary + 2), std::string::npos) << text;
}

TEST_F(OnTerminal, theLinkHasItsLineToItself) {
  const auto program = startStalled(Call::store, "quillbay share file >/dev/tty 2>/dev/tty");
  ASSERT_TRUE(program->waitToShow("0 of 1 file"));
  const std::string& text = program->terminal();
  const std::size_t link = text.find(link_ + "\r\n");
  ASSERT_NE(link, std::string::npos) << text;
  EXPECT_TRUE(link == 0 || text.substr(0, link).ends_with("\r\x1b[J")) << text;
}

TEST_F(OnTerminal, quietAndTerminalsWithoutCursorShowNothing) {
  for (const std::string command : {"quillbay share --quiet", "TERM=dumb quillbay share"}) {
    EXPECT_EQ(run(0, command + " file 2>/dev/tty")->terminal(), "");
  }
}

TEST_F(OnTerminal, thePasswordIsAskedForTwiceAndDoesNotShow) {
  const auto program = startAsking();
  const std::pair<const char*, const char*> rows[] = {
      {"ses\n", "at least 4 characters\r\nPassword for the link: "},
      {"sesame\n", "The same again: "},
      {"sesam\n", "They differ. Please try again.\r\nPassword for the link: "},
      {"sesame\n", "again.\r\nPassword for the link: \r\nThe same again: "},
      {"sesame\n", ""}};
  for (const auto& [typed, shown] : rows) {
    program->type(typed);
    ASSERT_TRUE(program->waitToShow(shown)) << program->terminal();
  }
  EXPECT_EQ(program->waitForExit(), 0) << program->terminal();
  EXPECT_THAT(program->terminal(), Not(HasSubstr("ses")));
  EXPECT_TRUE(program->terminalEchoes());
  EXPECT_EQ(sentSession().at("config").at("p"), "c2VzYW1l");
}

TEST_F(OnTerminal, theEndOfThePromptGivesTheEchoBack) {
  const std::tuple<const char*, int, const char*> rows[] = {
      {"ses\x03", 130, "link: \r\n"}, {"\x04", 2, "link: \r\nquillbay: nothing was"}};
  for (const auto& [keys, status, shown] : rows) {
    const auto program = startAsking();
    EXPECT_FALSE(program->terminalEchoes());
    program->type(keys);
    EXPECT_EQ(program->waitForExit(), status);
    EXPECT_THAT(program->terminal(), HasSubstr(shown));
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
  const auto program = start("quillbay share --password-file - file </dev/tty 2>/dev/tty");
  ASSERT_TRUE(program->waitToShow("The password: "));
  EXPECT_FALSE(program->terminalEchoes());
  program->type("sesame\n");
  EXPECT_EQ(program->waitForExit(), 0);
  EXPECT_EQ(sentSession().at("config").at("p"), "c2VzYW1l");
}

}  // namespace
}  // namespace quillbay::test
