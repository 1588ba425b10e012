#include <gtest/gtest.h>

#include <string>

#include "ProgramTest.h"

namespace quillbay::test {
namespace {

using OnTerminal = ProgramTest;

TEST_F(OnTerminal, theBarCountsFilesAndGoesAwayBeforeTheSummary) {
  const std::string other = folder_.write("other", "x");
  const auto program =
      startStalled(Call::store, {.arguments = {"share", file_, other}, .error = Stream::terminal});
  ASSERT_TRUE(program->waitUntil([&] { return program->shows("\x1b[32m\u2588"); }))
      << program->terminal();
  EXPECT_TRUE(program->shows("0 of 2 files"));
  gate_->open();
  EXPECT_EQ(program->waitForExit(), 0);
  EXPECT_EQ(program->output(), link_);
  const std::string& text = program->terminal();
  const std::size_t summary = text.find("\r\x1b[KShared 2 files (8 bytes) in ");
  ASSERT_NE(summary, std::string::npos) << text;
  EXPECT_TRUE(text.ends_with(".\r\n"));
  EXPECT_EQ(text.find('\x1b', summary + 2), std::string::npos) << text;
}

TEST_F(OnTerminal, theLinkHasItsLineToItself) {
  const auto program = startStalled(
      Call::store,
      {.arguments = {"share", file_}, .output = Stream::terminal, .error = Stream::terminal});
  ASSERT_TRUE(program->waitUntil([&] { return program->shows("0 of 1 file"); }));
  const std::string& text = program->terminal();
  const std::size_t link = text.find(FakeService::link);
  ASSERT_NE(link, std::string::npos);
  EXPECT_TRUE(link == 0 || text.substr(0, link).ends_with("\r\x1b[K")) << text;
  EXPECT_EQ(text.substr(link + std::string(FakeService::link).size(), 2), "\r\n");
}

TEST_F(OnTerminal, quietAndTerminalsWithoutCursorShowNothing) {
  const Setup rows[] = {{.arguments = {"share", file_, "--quiet"}},
                        {.arguments = {"share", file_}, .environment = {"TERM=dumb"}}};
  for (Setup setup : rows) {
    setup.error = Stream::terminal;
    const auto program = run(0, setup);
    EXPECT_EQ(program->terminal(), "");
  }
}

TEST_F(OnTerminal, thePasswordIsAskedForTwiceAndDoesNotShow) {
  ChildProcess program(
      reaching({.arguments = {"share", "--ask-password", file_}, .error = Stream::terminal}));
  ASSERT_TRUE(program.waitUntil([&] { return program.shows("Password for the link: "); }));
  program.type("sesame\n");
  ASSERT_TRUE(program.waitUntil([&] { return program.shows("The same again: "); }));
  program.type("sesam\n");
  ASSERT_TRUE(program.waitUntil(
      [&] { return program.shows("They differ. Please try again.\r\nPassword"); }));
  program.type("sesame\n");
  ASSERT_TRUE(program.waitUntil([&] {
    return program.terminal().find("The same again: ") !=
           program.terminal().rfind("The same again: ");
  }));
  program.type("sesame\n");
  EXPECT_EQ(program.waitForExit(), 0) << program.terminal();
  EXPECT_FALSE(program.shows("sesam")) << program.terminal();
  EXPECT_TRUE(program.terminalEchoes());
  EXPECT_EQ(sentPassword(), "c2VzYW1l");
}

TEST_F(OnTerminal, ctrlCWhileAskingGivesTheEchoBack) {
  ChildProcess program(
      reaching({.arguments = {"share", "--ask-password", file_}, .error = Stream::terminal}));
  ASSERT_TRUE(program.waitUntil([&] { return program.shows("Password for the link: "); }));
  EXPECT_FALSE(program.terminalEchoes());
  program.type("ses\x03");
  EXPECT_EQ(program.waitForExit(), 130);
  EXPECT_TRUE(program.terminalEchoes());
  EXPECT_TRUE(service_.calls().empty());
}

}  // namespace
}  // namespace quillbay::test
