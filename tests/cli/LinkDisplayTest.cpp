#include "ProgramTest.h"
#include "hosts/cli/MatrixCodeText.h"

namespace quillbay::test {
namespace {

using testing::HasSubstr;

class LinkDisplay : public ProgramTest {
 protected:
  struct Row {
    const char* option;
    std::vector<std::string> environment;
    Stream error;
    std::string shown;
    Stream output = Stream::file;
  };
  void expectShown(const Row& row) {
    SCOPED_TRACE(row.shown);
    const auto program = run(0, {.arguments = {"share", row.option, file_},
                                 .environment = row.environment,
                                 .output = row.output,
                                 .error = row.error});
    EXPECT_THAT(program->terminal() + program->error(), HasSubstr(row.shown));
    EXPECT_EQ(program->output(), row.output == Stream::file ? link_ : "");
  }
};

TEST_F(LinkDisplay, theTerminalIsAskedToCopyTheLink) {
  const std::string command = "]52;c;aHR0cHM6Ly9jbG91ZC5xdWlsbGJheS5leGFtcGxlL3Mvc2Vzc2lvbi0x\a";
  const Row rows[] = {
      {"--copy", {}, Stream::terminal, "\x1b" + command},
      {"--copy", {}, Stream::file, "\x1b" + command, Stream::terminal},
      {"--copy", {"TMUX=x"}, Stream::terminal, command + "\x1bPtmux;\x1b\x1b" + command + "\x1b\\"},
      {"--copy", {"STY=x"}, Stream::terminal, "\x1bP\x1b" + command + "\x1b\\"},
      {"--copy", {"TERM=dumb"}, Stream::terminal, "the link was not copied: neither"},
      {"--copy", {}, Stream::file, "the link was not copied: neither"},
  };
  for (const Row& row : rows) expectShown(row);
}

TEST_F(LinkDisplay, theCodeGoesToATerminalThatCanShowIt) {
  std::string code = cli::textOf(*host::MatrixCode::of(FakeService::link));
  for (std::size_t end = 0; (end = code.find('\n', end)) != std::string::npos; end += 2) {
    code.insert(end, "\r");
  }
  const Row rows[] = {
      {"--qr", {}, Stream::terminal, code},
      {"--qr", {}, Stream::file, "there is no QR code: standard error is not", Stream::terminal},
      {"--qr", {"LC_ALL=C"}, Stream::terminal, "there is no QR code: the locale's"},
  };
  for (const Row& row : rows) expectShown(row);
}

TEST(MatrixCodeText, drawsEachModuleBlackOnWhite) {
  const auto code = *host::MatrixCode::of("https://x/1");
  std::vector<std::string> rows(code.size() + 1);
  std::istringstream lines(cli::textOf(code));
  std::size_t row = 0;
  for (std::string line; std::getline(lines, line); row += 2) {
    ASSERT_TRUE(line.starts_with("\x1b[38;5;16;48;5;231m") && line.ends_with("\x1b[0m"));
    line = line.substr(19, line.size() - 23);
    while (!line.empty()) {
      const std::size_t length = line.front() == ' ' ? 1 : 3;
      const std::string block = line.substr(0, length);
      rows[row] += block == "█" || block == "▀" ? '#' : '.';
      rows[row + 1] += block == "█" || block == "▄" ? '#' : '.';
      line.erase(0, length);
    }
  }
  ASSERT_EQ(row, code.size() + 1) << "21 + 8 rows in 15 lines";
  const std::string margin(code.size(), '.');
  EXPECT_EQ(rows[0] + rows[3] + rows.back(), margin + margin + margin);
  // The corner by which readers find the code.
  EXPECT_EQ(rows[4].substr(0, 12), "....#######.");
  EXPECT_EQ(rows[5].substr(0, 12), "....#.....#.");
  for (std::size_t y = 0; y < code.size(); ++y) {
    for (std::size_t x = 0; x < code.size(); ++x) {
      ASSERT_EQ(rows[y][x] == '#', code.isDark(y, x)) << y << " " << x;
    }
  }
}

}  // namespace
}  // namespace quillbay::test
