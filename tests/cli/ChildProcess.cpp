#include "ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include "Waiting.h"

namespace quillbay::test {
namespace {

using Clock = std::chrono::steady_clock;
using Stream = ChildProcess::Stream;

void require(bool holds, const char* what) {
  if (!holds) throw std::runtime_error(what);
}

struct Pipe {
  Pipe() {
    std::array<int, 2> ends{};
    require(::pipe2(ends.data(), O_CLOEXEC) == 0, "pipe2");
    source = FileDescriptor(ends[0]);
    sink = FileDescriptor(ends[1]);
  }
  FileDescriptor source;
  FileDescriptor sink;
};

struct Terminal {
  Terminal() {
    winsize size{.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
    std::array<int, 2> ends{};
    require(::openpty(&ends[0], &ends[1], path.data(), nullptr, &size) == 0, "openpty");
    for (const int end : ends) ::fcntl(end, F_SETFD, FD_CLOEXEC);
    controller = FileDescriptor(ends[0]);
    device = FileDescriptor(ends[1]);
  }
  FileDescriptor controller;
  FileDescriptor device;
  std::array<char, 64> path{};
};

/// In the child: a session of its own, so that a terminal can become its controlling one, and no
/// signal settings of ours.
void isolate(const std::vector<int>& ignoredSignals) {
  ::setsid();
  sigset_t none;
  ::sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  for (int number = 1; number < NSIG; ++number) ::signal(number, SIG_DFL);
  for (const int number : ignoredSignals) ::signal(number, SIG_IGN);
}

/// In the child: what stands behind the number of a standard stream.
void connect(int number, Stream stream, const Pipe& pipe, const char* file, const char* terminal) {
  if (stream == Stream::closed) return void(::close(number));
  int opened = pipe.sink.get();
  if (stream == Stream::file) opened = ::open(file, O_WRONLY | O_APPEND | O_CLOEXEC);
  // The first terminal that the leader of a session opens becomes its controlling one.
  if (stream == Stream::terminal) opened = ::open(terminal, O_RDWR | O_CLOEXEC);
  ::dup2(opened, number);
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
  const std::string outputFile = folder_.write("output", "");
  const std::string errorFile = folder_.write("error", "");
  Pipe output;
  if (setup.output == Stream::brokenPipe) output.source.reset();
  Pipe input;
  const auto length = static_cast<ssize_t>(setup.input.size());
  require(::write(input.sink.get(), setup.input.data(), setup.input.size()) == length, "write");
  Terminal terminal;
  const char* const terminalPath = terminal.path.data();
  std::vector<std::string> words{setup.program};
  words.insert(words.end(), setup.arguments.begin(), setup.arguments.end());
  std::vector<std::string> variables = environmentOf(setup);
  const std::vector<char*> wordPointers = pointers(words);
  const std::vector<char*> variablePointers = pointers(variables);

  process_ = ::fork();
  require(process_ >= 0, "fork");
  if (process_ == 0) {
    isolate(setup.ignoredSignals);
    ::dup2(input.source.get(), STDIN_FILENO);
    connect(STDOUT_FILENO, setup.output, output, outputFile.c_str(), terminalPath);
    connect(STDERR_FILENO, setup.error, output, errorFile.c_str(), terminalPath);
    ::execve(wordPointers[0], wordPointers.data(), variablePointers.data());
    ::_exit(127);
  }

  outputSource_ = std::move(output.source);
  terminalSource_ = std::move(terminal.controller);
  terminalDevice_ = std::move(terminal.device);
}

ChildProcess::~ChildProcess() {
  if (status_) return;
  ::kill(process_, SIGKILL);
  ::waitpid(process_, nullptr, 0);
}

bool ChildProcess::waitUntil(const std::function<bool()>& condition) {
  const auto end = Clock::now() + generousBound();
  while (!condition()) {
    if (Clock::now() >= end) return false;
    readTerminal();
  }
  return true;
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
  pollfd source{terminalSource_.get(), POLLIN, 0};
  if (::poll(&source, 1, kMomentMilliseconds) <= 0) return false;
  std::array<char, 4096> buffer{};
  const ssize_t count = ::read(source.fd, buffer.data(), buffer.size());
  if (count > 0) terminal_.append(buffer.data(), static_cast<std::size_t>(count));
  return count > 0;
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

}  // namespace quillbay::test
