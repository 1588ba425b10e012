#include "ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <spawn.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

namespace quillbay::test {
namespace {

using Clock = std::chrono::steady_clock;
using Stream = ChildProcess::Stream;

constexpr std::chrono::seconds kGenerousBound{10};

void require(bool holds, const char* what) {
  if (!holds) throw std::runtime_error(what);
}

std::vector<std::string> environmentOf(const ChildProcess::Setup& setup) {
  // Of two with the same name the first counts.
  std::vector<std::string> variables = setup.environment;
  variables.insert(variables.end(), {"PATH=/usr/bin:/bin", "LC_ALL=C.UTF-8", "TERM=xterm"});
  for (const char* name : {"ASAN_OPTIONS", "UBSAN_OPTIONS"}) {
    if (const char* value = ::getenv(name)) variables.push_back(std::string(name) + "=" + value);
  }
  // The thread sanitizer sleeps for a second at the end, which would pass for slowness of ours.
  const char* threadOptions = ::getenv("TSAN_OPTIONS");
  variables.push_back("TSAN_OPTIONS=atexit_sleep_ms=0 " +
                      std::string(threadOptions == nullptr ? "" : threadOptions));
  return variables;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (std::string& text : texts) result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

}  // namespace

ChildProcess::ChildProcess(const Setup& setup) {
  winsize size{.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
  std::array<int, 2> terminal{};
  std::array<int, 2> pipe{};
  std::array<char, 64> terminalPath{};
  require(::openpty(&terminal[0], &terminal[1], terminalPath.data(), nullptr, &size) == 0, "pty");
  require(::pipe2(pipe.data(), O_CLOEXEC) == 0, "pipe");
  for (const int end : terminal) ::fcntl(end, F_SETFD, FD_CLOEXEC);
  terminalSource_ = FileDescriptor(terminal[0]);
  terminalDevice_ = FileDescriptor(terminal[1]);
  outputSource_ = FileDescriptor(pipe[0]);
  const FileDescriptor outputSink(pipe[1]);

  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  const auto open = [&](int number, const std::string& path, int flags) {
    ::posix_spawn_file_actions_addopen(&actions, number, path.c_str(), flags, 0);
  };
  const auto connect = [&](int number, Stream stream, const char* file) {
    // The first terminal that the leader of a session opens becomes its controlling one.
    if (stream == Stream::terminal) return open(number, terminalPath.data(), O_RDWR);
    if (stream == Stream::file) return open(number, folder_.write(file, ""), O_WRONLY | O_APPEND);
    if (stream == Stream::closed) ::posix_spawn_file_actions_addclose(&actions, number);
    if (stream == Stream::pipe) ::posix_spawn_file_actions_adddup2(&actions, pipe[1], number);
  };
  open(STDIN_FILENO, setup.input ? folder_.write("input", *setup.input) : terminalPath.data(),
       O_RDWR);
  connect(STDOUT_FILENO, setup.output, "output");
  connect(STDERR_FILENO, setup.error, "error");

  // A session and signal settings of its own.
  posix_spawnattr_t attributes;
  sigset_t signals;
  ::posix_spawnattr_init(&attributes);
  ::posix_spawnattr_setflags(&attributes,
                             POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  ::sigemptyset(&signals);
  ::posix_spawnattr_setsigmask(&attributes, &signals);
  ::sigfillset(&signals);
  for (const int number : setup.ignoredSignals) {
    ::signal(number, SIG_IGN);
    ::sigdelset(&signals, number);
  }
  ::posix_spawnattr_setsigdefault(&attributes, &signals);

  std::vector<std::string> words{setup.program};
  words.insert(words.end(), setup.arguments.begin(), setup.arguments.end());
  std::vector<std::string> variables = environmentOf(setup);
  require(::posix_spawn(&process_, words[0].c_str(), &actions, &attributes, pointers(words).data(),
                        pointers(variables).data()) == 0,
          "posix_spawn");
  for (const int number : setup.ignoredSignals) ::signal(number, SIG_DFL);
  ::posix_spawnattr_destroy(&attributes);
  ::posix_spawn_file_actions_destroy(&actions);
}

ChildProcess::~ChildProcess() {
  if (status_) return;
  ::kill(process_, SIGKILL);
  ::waitpid(process_, nullptr, 0);
}

bool ChildProcess::waitUntil(const std::function<bool()>& condition) {
  const auto end = Clock::now() + kGenerousBound;
  while (!condition()) {
    if (Clock::now() >= end) return false;
    readTerminal();
  }
  return true;
}

bool ChildProcess::waitToShow(const std::string& text) {
  return waitUntil([&] { return terminal_.contains(text); });
}

std::optional<int> ChildProcess::waitForExit() {
  static_cast<void>(waitUntil([this] {
    int status = 0;
    if (!status_ && ::waitpid(process_, &status, WNOHANG) == process_) {
      status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
    }
    return status_.has_value();
  }));
  for (std::size_t length = terminal_.size() + 1; length != terminal_.size();) {
    length = terminal_.size();
    readTerminal();
  }
  return status_;
}

void ChildProcess::readTerminal() {
  constexpr int kMomentMilliseconds = 5;
  pollfd source{terminalSource_.get(), POLLIN, 0};
  if (::poll(&source, 1, kMomentMilliseconds) <= 0) return;
  std::array<char, 4096> buffer{};
  const ssize_t count = ::read(source.fd, buffer.data(), buffer.size());
  if (count > 0) terminal_.append(buffer.data(), static_cast<std::size_t>(count));
}

void ChildProcess::signal(int number) const { ::kill(process_, number); }

void ChildProcess::type(const std::string& text) const {
  const auto length = static_cast<ssize_t>(text.size());
  require(::write(terminalSource_.get(), text.data(), text.size()) == length, "write");
}

bool ChildProcess::terminalEchoes() const {
  termios settings{};
  require(::tcgetattr(terminalSource_.get(), &settings) == 0, "tcgetattr");
  return (settings.c_lflag & ECHO) != 0;
}

void ChildProcess::turnEchoOn() const {
  termios settings{};
  ::tcgetattr(terminalSource_.get(), &settings);
  settings.c_lflag |= static_cast<tcflag_t>(ECHO);
  ::tcsetattr(terminalSource_.get(), TCSANOW, &settings);
}

}  // namespace quillbay::test
