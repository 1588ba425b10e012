#include "ProgramTest.h"
#include "hosts/cli/MatrixCodeText.h"

namespace quillbay::test {
namespace {

class LinkDisplay : public ProgramTest {
 protected:
  struct Row {
    const char* command;
    const char* redirection;
    std::string shown;
  };
  void expectShown(const Row& row) {
    SCOPED_TRACE(row.command);
    const auto program = run(0, row.command + std::string(" file ") + row.redirection);
    EXPECT_THAT(program->terminal() + program->error(), HasSubstr(row.shown));
    const bool isLinkOnTerminal = row.redirection == std::string(">/dev/tty");
    EXPECT_EQ(program->output(), isLinkOnTerminal ? "" : link_ + "\n");
  }
};

TEST_F(LinkDisplay, theTerminalIsAskedToCopyTheLink) {
  const std::string command = "]52;c;aHR0cHM6Ly9jbG91ZC5xdWlsbGJheS5leGFtcGxlL3Mvc2Vzc2lvbi0x\a";
  const std::string tmux = command + "\x1bPtmux;\x1b\x1b" + command + "\x1b\\";
  const Row rows[] = {
      {"quillbay share --copy", "2>/dev/tty", "\x1b" + command},
      {"quillbay share --copy", ">/dev/tty", "\x1b" + command},
      {"TMUX=x quillbay share --copy", "2>/dev/tty", tmux},
      {"STY=x quillbay share --copy", "2>/dev/tty", "\x1bP\x1b" + command + "\x1b\\"},
      {"TERM=dumb quillbay share --copy", "2>/dev/tty", "the link was not copied: neither"},
      {"quillbay share --copy", "", "the link was not copied: neither"},
  };
  for (const Row& row : rows) expectShown(row);
}

TEST_F(LinkDisplay, theCodeGoesToATerminalThatCanShowIt) {
  std::string code = cli::textOf(*host::MatrixCode::of(FakeService::link));
  for (std::size_t end = 0; (end = code.find('\n', end)) != std::string::npos; end += 2) {
    code.insert(end, "\r");
  }
  const Row rows[] = {
      {"quillbay share --qr", "2>/dev/tty", code},
      {"quillbay share --qr", ">/dev/tty", "there is no QR code: standard error is not"},
      {"LC_ALL=C quillbay share --qr", "2>/dev/tty", "there is no QR code: the locale's"},
  };
  for (const Row& row : rows) expectShown(row);
}

TEST(MatrixCodeText, drawsEachModuleBlackOnWhite) {
  const auto code = *host::MatrixCode::of("https://x/1");
  ASSERT_EQ(code.size(), 21U + 8U) << "with its margin";
  // Of two modules, the lower one first.
  const char* const blocks[] = {" ", "▀", "▄", "█"};
  std::string expected;
  for (std::size_t y = 0; y < code.size(); y += 2) {
    expected += (y == 0 ? "" : "\n") + std::string("\x1b[38;5;16;48;5;231m");
    for (std::size_t x = 0; x < code.size(); ++x) {
      const bool isLowerDark = y + 1 < code.size() && code.isDark(y + 1, x);
      expected += blocks[(isLowerDark ? 2 : 0) + (code.isDark(y, x) ? 1 : 0)];
    }
    expected += "\x1b[0m";
  }
  EXPECT_EQ(cli::textOf(code), expected);
  // The corner by which readers find the code.
  for (const char* corner : {"231m    █▀▀▀▀▀█ ", "231m    █ ███ █ ", "231m    ▀▀▀▀▀▀▀ "}) {
    EXPECT_THAT(expected, HasSubstr(corner));
  }
}

}  // namespace
}  // namespace quillbay::test
