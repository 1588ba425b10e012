#include "ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>

#include "Waiting.h"

namespace quillbay::test {

ChildProcess::ChildProcess(const std::filesystem::path& folder, const std::string& command,
                           std::string_view input) {
  streams_.write("input", input);
  const std::string script =
      "cd '" + streams_.path().string() + "' && exec <input >output 2>error && cd '" +
      folder.string() + "' && exec env -i PATH=/usr/bin:/bin LC_ALL=C.UTF-8 TERM=xterm " +
      R"(ASAN_OPTIONS="$ASAN_OPTIONS" UBSAN_OPTIONS="$UBSAN_OPTIONS" TSAN_OPTIONS="$TSAN_OPTIONS" )" +
      command;
  winsize size{.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
  int terminal = -1;
  process_ = ::forkpty(&terminal, nullptr, nullptr, &size);
  if (process_ < 0) throw std::runtime_error("forkpty");
  if (process_ == 0) {
    for (const int number : {SIGINT, SIGHUP, SIGTERM}) ::signal(number, SIG_DFL);
    ::execl("/bin/sh", "sh", "-c", script.c_str(), nullptr);
    ::_exit(127);
  }
  ::fcntl(terminal, F_SETFD, FD_CLOEXEC);
  terminal_ = host::FileDescriptor(terminal);
}

ChildProcess::~ChildProcess() {
  if (status_) return;
  ::kill(process_, SIGKILL);
  ::waitpid(process_, nullptr, 0);
}

bool ChildProcess::waitUntil(const std::function<bool()>& condition) {
  return test::waitUntil([&] {
    readTerminal();
    return condition();
  });
}

std::optional<int> ChildProcess::waitForExit() {
  static_cast<void>(waitUntil([this] {
    int status = 0;
    if (!status_ && ::waitpid(process_, &status, WNOHANG) == process_) {
      status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
    }
    return status_.has_value();
  }));
  while (readTerminal()) {
  }
  return status_;
}

bool ChildProcess::readTerminal() {
  constexpr int kMomentMilliseconds = 5;
  pollfd source{terminal_.get(), POLLIN, 0};
  if (::poll(&source, 1, kMomentMilliseconds) <= 0) return false;
  std::array<char, 4096> buffer{};
  const ssize_t count = ::read(source.fd, buffer.data(), buffer.size());
  if (count > 0) shown_.append(buffer.data(), static_cast<std::size_t>(count));
  return count > 0;
}

void ChildProcess::type(const std::string& text) const {
  const auto length = static_cast<ssize_t>(text.size());
  if (::write(terminal_.get(), text.data(), text.size()) != length) throw std::runtime_error(text);
}

bool ChildProcess::terminalEchoes() const {
  termios settings{};
  ::tcgetattr(terminal_.get(), &settings);
  return (settings.c_lflag & ECHO) != 0;
}

void ChildProcess::turnEchoOn() const {
  termios settings{};
  ::tcgetattr(terminal_.get(), &settings);
  settings.c_lflag |= static_cast<tcflag_t>(ECHO);
  ::tcsetattr(terminal_.get(), TCSANOW, &settings);
}

}  // namespace quillbay::test
