#include "SecretSource.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <optional>
#include <string_view>
#include <utility>

#include "Interruption.h"
#include "StandardStreams.h"
#include "hosts/common/FileDescriptor.h"
#include "hosts/common/PlainText.h"

namespace quillbay::cli {
namespace {

constexpr std::size_t kLongestLineByteCount = 4096;
constexpr int kMostAttempts = 3;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::unexpected<SecretSource::Failure> failed(std::string message) {
  return std::unexpected(SecretSource::Failure{ExitStatus::usage, std::move(message)});
}

std::unexpected<SecretSource::Failure> cancelled() {
  return std::unexpected(SecretSource::Failure{ExitStatus::cancelled, {}});
}

/// What the signal handler needs. Written only while the handler is not installed.
struct {
  int terminal = -1;
  termios settings{};
} hiddenInput;

/// A shell that brings the program back to the foreground may have turned the echo on.
void hideAgain(int /*signal*/) {
  const int error = errno;
  ::tcsetattr(hiddenInput.terminal, TCSANOW, &hiddenInput.settings);
  errno = error;
}

/// Echo is off while this lives. One at a time.
class HiddenInput {
 public:
  explicit HiddenInput(int terminal) : terminal_(terminal) {
    if (::tcgetattr(terminal, &original_) != 0) return;
    termios hidden = original_;
    hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHOE | ECHOK | ECHONL);
    hidden.c_lflag |= static_cast<tcflag_t>(ICANON);
    isHidden_ = ::tcsetattr(terminal, TCSAFLUSH, &hidden) == 0;
    if (!isHidden_) return;
    hiddenInput = {terminal, hidden};
    struct sigaction action{};
    action.sa_handler = hideAgain;
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGCONT, &action, &originalAction_);
  }
  HiddenInput(const HiddenInput&) = delete;
  HiddenInput& operator=(const HiddenInput&) = delete;
  ~HiddenInput() {
    if (!isHidden_) return;
    ::sigaction(SIGCONT, &originalAction_, nullptr);
    ::tcsetattr(terminal_, TCSAFLUSH, &original_);
  }

  bool isHidden() const { return isHidden_; }

 private:
  const int terminal_;
  termios original_{};
  struct sigaction originalAction_{};
  bool isHidden_ = false;
};

}  // namespace

SecretSource::Result SecretSource::readFile(const std::string& path,
                                            const std::string& name) const {
  const bool isStandardInput = path == "-";
  const bool isTyped = isStandardInput && ::isatty(STDIN_FILENO) != 0;
  const std::string origin = isStandardInput ? "standard input" : host::inQuotes(path);
  const std::string failure = "cannot read the " + name + " from " + origin + ": ";
  host::FileDescriptor file;
  if (isTyped || !isStandardInput) {
    // A terminal for writing, too: after `</dev/tty`, standard input cannot take the prompt. All
    // else without blocking: Ctrl-C must end the wait for the other end of a FIFO, too.
    const int mode = isTyped ? O_RDWR : O_RDONLY | O_NONBLOCK;
    const char* const opened = isTyped ? "/dev/stdin" : path.c_str();
    file = host::FileDescriptor(::open(opened, mode | O_CLOEXEC | O_NOCTTY));
    if (!file.isOpen()) return failed(failure + std::strerror(errno));
  }

  auto line = isTyped ? prompt(file.get(), "The " + name + ": ")
                      : firstLine(isStandardInput ? STDIN_FILENO : file.get(), failure);
  if (!line) return line;
  if (line->empty())
    return failed("the first line of " + origin + " is empty; a " + name + " should stand there");
  if (!host::codePointCount(*line))
    return failed("the " + name + " in " + origin + " is not UTF-8 text");
  return line;
}

SecretSource::Result SecretSource::firstLine(int descriptor, const std::string& failure) const {
  auto line = readLine(descriptor, failure);
  if (!line) return std::unexpected(std::move(line.error()));
  // Editors put it there unasked.
  if (line->text.starts_with(kByteOrderMark)) line->text.erase(0, kByteOrderMark.size());
  return std::move(line->text);
}

std::expected<SecretSource::Line, SecretSource::Failure> SecretSource::readLine(
    int descriptor, const std::string& failure) const {
  std::string line;
  bool isWhole = false;
  while (true) {
    std::array<pollfd, 2> events = {
        {{interruption_.descriptor(), POLLIN, 0}, {descriptor, POLLIN, 0}}};
    ::poll(events.data(), events.size(), -1);
    if (events[0].revents != 0) return cancelled();
    if (events[1].revents == 0) continue;

    // Byte by byte: what follows the first line belongs to the next reader of standard input.
    char byte = 0;
    const ssize_t count = ::read(descriptor, &byte, 1);
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) continue;
    if (count < 0) return failed(failure + std::strerror(errno));
    isWhole = count > 0 && byte == '\n';
    if (count == 0 || isWhole) break;
    line += byte;
    if (line.size() > kLongestLineByteCount) return failed(failure + "the line is too long");
  }
  if (line.ends_with('\r')) line.pop_back();
  return Line{std::move(line), isWhole};
}

SecretSource::Result SecretSource::askPassword(const Check& check) const {
  const host::FileDescriptor terminal(::open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY));
  if (!terminal.isOpen()) {
    return failed("there is no terminal to ask for the password on; use --password-file");
  }
  for (int attempt = 1; attempt <= kMostAttempts; ++attempt) {
    auto first = prompt(terminal.get(), "Password for the link: ");
    if (!first) return first;
    if (!host::codePointCount(*first)) return failed("the password is not UTF-8 text");
    if (const auto problem = check(*first)) {
      writeAll(terminal.get(), "quillbay: " + *problem + "\n");
      continue;
    }
    auto second = prompt(terminal.get(), "The same again: ");
    if (!second || *first == *second) return second;
    writeAll(terminal.get(), "They differ. Please try again.\n");
  }
  return failed("no password after " + std::to_string(kMostAttempts) + " attempts");
}

SecretSource::Result SecretSource::prompt(int terminal, const std::string& text) const {
  const HiddenInput hidden(terminal);
  if (!hidden.isHidden()) return failed("cannot hide what is typed on this terminal");
  writeAll(terminal, text);
  auto line = readLine(terminal, "cannot read from the terminal: ");
  // The end of the line was not echoed, and with Ctrl-C or Ctrl-D there was none.
  writeAll(terminal, "\n");
  if (!line) return std::unexpected(std::move(line.error()));
  if (!line->isWhole && line->text.empty()) return failed("nothing was entered");
  return std::move(line->text);
}

}  // namespace quillbay::cli
