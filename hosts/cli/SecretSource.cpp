#include "SecretSource.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>

#include "Interruption.h"
#include "StandardStreams.h"
#include "hosts/common/FileDescriptor.h"
#include "hosts/common/PlainText.h"

namespace quillbay::cli {
namespace {

constexpr std::size_t kLongestLineByteCount = 4096;
constexpr int kMostAttempts = 3;

std::unexpected<SecretSource::Failure> failed(std::string message) {
  return std::unexpected(SecretSource::Failure{ExitStatus::usage, std::move(message)});
}

std::unexpected<SecretSource::Failure> cancelled() {
  return std::unexpected(SecretSource::Failure{ExitStatus::cancelled, {}});
}

/// Echo is off while this lives.
class HiddenInput {
 public:
  explicit HiddenInput(int terminal) : terminal_(terminal) {
    if (::tcgetattr(terminal, &original_) != 0) return;
    termios hidden = original_;
    hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHOE | ECHOK);
    // The end of the line shows, so that what is printed next has a line of its own.
    hidden.c_lflag |= static_cast<tcflag_t>(ICANON | ECHONL);
    isHidden_ = ::tcsetattr(terminal, TCSAFLUSH, &hidden) == 0;
  }
  HiddenInput(const HiddenInput&) = delete;
  HiddenInput& operator=(const HiddenInput&) = delete;
  ~HiddenInput() {
    if (isHidden_) ::tcsetattr(terminal_, TCSAFLUSH, &original_);
  }

  bool isHidden() const { return isHidden_; }

 private:
  const int terminal_;
  termios original_{};
  bool isHidden_ = false;
};

}  // namespace

SecretSource::Result SecretSource::readFile(const std::string& path,
                                            const std::string& name) const {
  const bool isStandardInput = path == "-";
  const std::string origin = isStandardInput ? "standard input" : host::inQuotes(path);
  host::FileDescriptor file;
  if (!isStandardInput) {
    // Without blocking: Ctrl-C must end the wait for somebody to open a FIFO's other end, too.
    file = host::FileDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file.isOpen()) {
      return failed("cannot read the " + name + " from " + origin + ": " + std::strerror(errno));
    }
  }

  auto line = readLine(isStandardInput ? STDIN_FILENO : file.get(),
                       "cannot read the " + name + " from " + origin + ": ");
  if (!line) return line;
  if (line->empty())
    return failed("the first line of " + origin + " is empty; a " + name + " should stand there");
  if (!host::codePointCount(*line))
    return failed("the " + name + " in " + origin + " is not UTF-8 text");
  return line;
}

SecretSource::Result SecretSource::readLine(int descriptor, const std::string& failure) const {
  std::string line;
  while (true) {
    std::array<pollfd, 2> events = {
        {{interruption_.descriptor(), POLLIN, 0}, {descriptor, POLLIN, 0}}};
    ::poll(events.data(), events.size(), -1);
    if (events[0].revents != 0) return cancelled();
    if (events[1].revents == 0) continue;

    // Byte by byte: what follows the first line belongs to whoever reads standard input next.
    char byte = 0;
    const ssize_t count = ::read(descriptor, &byte, 1);
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) continue;
    if (count < 0) return failed(failure + std::strerror(errno));
    if (count == 0 || byte == '\n') break;
    line += byte;
    if (line.size() > kLongestLineByteCount) return failed(failure + "the line is too long");
  }
  if (line.ends_with('\r')) line.pop_back();
  return line;
}

SecretSource::Result SecretSource::askPassword() const {
  const host::FileDescriptor terminal(::open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY));
  if (!terminal.isOpen()) {
    return failed("there is no terminal to ask for the password on; use --password-file");
  }
  for (int attempt = 1; attempt <= kMostAttempts; ++attempt) {
    auto first = prompt(terminal.get(), "Password for the link: ");
    if (!first) return first;
    if (first->empty()) return failed("the password is empty");
    if (!host::codePointCount(*first)) return failed("the password is not UTF-8 text");
    auto second = prompt(terminal.get(), "The same again: ");
    if (!second || *first == *second) return second;
    writeAll(terminal.get(), "They differ. Please try again.\n");
  }
  return failed("the two answers differed " + std::to_string(kMostAttempts) + " times");
}

SecretSource::Result SecretSource::prompt(int terminal, const std::string& text) const {
  const HiddenInput hidden(terminal);
  if (!hidden.isHidden()) return failed("cannot hide what is typed on this terminal");
  writeAll(terminal, text);
  auto line = readLine(terminal, "cannot read from the terminal: ");
  if (!line && line.error().status == ExitStatus::cancelled) writeAll(terminal, "\n");
  return line;
}

}  // namespace quillbay::cli
