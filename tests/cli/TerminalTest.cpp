#include <gtest/gtest.h>

#include <csignal>
#include <ostream>
#include <string>

#include "ProgramTest.h"

namespace quillbay::test {
namespace {

class OnTerminal : public ProgramTest {
 protected:
  static bool shows(const ChildProcess& program, const std::string& text) {
    return program.terminal().find(text) != std::string::npos;
  }
};

TEST_F(OnTerminal, theBarCountsFilesAndGoesAwayBeforeTheSummary) {
  const auto gate = stall(Call::store);
  const std::string other = folder_.write("other", "x");
  ChildProcess program(reaching({.arguments = {"share", file_, other}, .error = Stream::terminal}));
  ASSERT_TRUE(program.waitUntil([&] { return shows(program, "\x1b[32m\u2588"); }))
      << program.terminal();
  EXPECT_TRUE(shows(program, "0 of 2 files"));
  gate->open();
  EXPECT_EQ(program.waitForExit(), 0);
  EXPECT_EQ(program.output(), link_);
  const std::string& text = program.terminal();
  const std::size_t summary = text.find("\r\x1b[KShared 2 files (8 bytes) in ");
  ASSERT_NE(summary, std::string::npos) << text;
  EXPECT_TRUE(text.ends_with(".\r\n"));
  EXPECT_EQ(text.find('\x1b', summary + 2), std::string::npos) << text;
}

TEST_F(OnTerminal, aLongFingerprintIsNotSilence) {
  const std::string large = folder_.writeSparse("large", std::uint64_t{1} << 42);
  ChildProcess program(reaching({.arguments = {"share", large}, .error = Stream::terminal}));
  ASSERT_TRUE(program.waitUntil([&] { return shows(program, "Fingerprinting 1 file (4.4 TB)"); }))
      << program.terminal();
  program.type("\x03");
  EXPECT_EQ(program.waitForExit(), 130);
}

TEST_F(OnTerminal, theLinkHasItsLineToItself) {
  const auto gate = stall(Call::store);
  ChildProcess program(reaching(
      {.arguments = {"share", file_}, .output = Stream::terminal, .error = Stream::terminal}));
  ASSERT_TRUE(program.waitUntil([&] { return shows(program, "0 of 1 file"); }));
  const std::string& text = program.terminal();
  const std::size_t link = text.find(FakeService::link);
  ASSERT_NE(link, std::string::npos);
  EXPECT_TRUE(link == 0 || text.substr(0, link).ends_with("\r\x1b[K")) << text;
  EXPECT_EQ(text.substr(link + std::string(FakeService::link).size(), 2), "\r\n");
}

struct Silence {
  const char* name;
  std::vector<std::string> options;
  std::vector<std::string> environment;

  friend void PrintTo(const Silence& row, std::ostream* out) { *out << row.name; }
};

class SilentTerminal : public ProgramTest, public testing::WithParamInterface<Silence> {};

TEST_P(SilentTerminal, showsNothing) {
  Setup setup = reaching({.arguments = {"share", file_}, .error = Stream::terminal});
  setup.arguments.insert(setup.arguments.end(), GetParam().options.begin(),
                         GetParam().options.end());
  setup.environment.insert(setup.environment.begin(), GetParam().environment.begin(),
                           GetParam().environment.end());
  ChildProcess program(setup);
  EXPECT_EQ(program.waitForExit(), 0);
  EXPECT_EQ(program.terminal(), "");
}

INSTANTIATE_TEST_SUITE_P(OnTerminal, SilentTerminal,
                         testing::Values(Silence{"quiet", {"--quiet"}, {}},
                                         Silence{"dumb", {}, {"TERM=dumb"}}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(OnTerminal, noColorMeansNoColours) {
  const auto gate = stall(Call::store);
  Setup setup = reaching({.arguments = {"share", file_}, .error = Stream::terminal});
  setup.environment.emplace_back("NO_COLOR=1");
  ChildProcess program(setup);
  ASSERT_TRUE(program.waitUntil([&] { return shows(program, "0 of 1 file"); }));
  EXPECT_FALSE(shows(program, "\x1b[32m")) << program.terminal();
}

TEST_F(OnTerminal, thePasswordIsAskedForTwiceAndDoesNotShow) {
  ChildProcess program(
      reaching({.arguments = {"share", "--ask-password", file_}, .hasTerminal = true}));
  ASSERT_TRUE(program.waitUntil([&] { return shows(program, "Password for the link: "); }));
  program.type("sesame\n");
  ASSERT_TRUE(program.waitUntil([&] { return shows(program, "The same again: "); }));
  program.type("sesam\n");
  ASSERT_TRUE(program.waitUntil(
      [&] { return shows(program, "They differ. Please try again.\r\nPassword"); }));
  program.type("sesame\n");
  ASSERT_TRUE(program.waitUntil([&] {
    return program.terminal().find("The same again: ") !=
           program.terminal().rfind("The same again: ");
  }));
  program.type("sesame\n");
  EXPECT_EQ(program.waitForExit(), 0) << program.error();
  EXPECT_FALSE(shows(program, "sesam")) << program.terminal();
  EXPECT_TRUE(program.terminalEchoes());
  EXPECT_EQ(sentPassword(), "c2VzYW1l");
}

TEST_F(OnTerminal, ctrlCWhileAskingGivesTheEchoBack) {
  ChildProcess program(
      reaching({.arguments = {"share", "--ask-password", file_}, .hasTerminal = true}));
  ASSERT_TRUE(program.waitUntil([&] { return shows(program, "Password for the link: "); }));
  EXPECT_FALSE(program.terminalEchoes());
  program.type("ses\x03");
  EXPECT_EQ(program.waitForExit(), 130);
  EXPECT_TRUE(program.terminalEchoes());
  EXPECT_TRUE(service_.calls().empty());
}

}  // namespace
}  // namespace quillbay::test
