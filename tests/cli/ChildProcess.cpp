#include "ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
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
    int device = -1;
    int ours = -1;
    require(::openpty(&ours, &device, path.data(), nullptr, &size) == 0, "openpty");
    ::fcntl(ours, F_SETFD, FD_CLOEXEC);
    ::close(device);
    controller = FileDescriptor(ours);
  }
  FileDescriptor controller;
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
void connect(int number, Stream stream, const Pipe& pipe, const char* terminalPath) {
  if (stream == Stream::closed) return void(::close(number));
  // The first terminal that the leader of a session opens becomes its controlling one.
  const bool isTerminal = stream == Stream::terminal;
  ::dup2(isTerminal ? ::open(terminalPath, O_RDWR | O_CLOEXEC) : pipe.sink.get(), number);
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

/// Appends what `source` has; closes it at its end.
void drain(FileDescriptor& source, std::string& text) {
  std::array<char, 65536> buffer{};
  const ssize_t count = ::read(source.get(), buffer.data(), buffer.size());
  if (count > 0) return void(text.append(buffer.data(), static_cast<std::size_t>(count)));
  if (count == 0 || errno != EINTR) source.reset();
}

}  // namespace

ChildProcess::ChildProcess(const Setup& setup) {
  Pipe input;
  Pipe output;
  Pipe error;
  Terminal terminal;
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
    connect(STDOUT_FILENO, setup.output, output, terminal.path.data());
    connect(STDERR_FILENO, setup.error, error, terminal.path.data());
    ::execve(wordPointers[0], wordPointers.data(), variablePointers.data());
    ::_exit(127);
  }

  if (setup.output == Stream::pipe) outputSource_ = std::move(output.source);
  if (setup.error == Stream::pipe) errorSource_ = std::move(error.source);
  const bool usesTerminal = setup.output == Stream::terminal || setup.error == Stream::terminal;
  if (usesTerminal) terminalSource_ = std::move(terminal.controller);
  const auto length = static_cast<ssize_t>(setup.input.size());
  require(::write(input.sink.get(), setup.input.data(), setup.input.size()) == length, "write");
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
    readSome();
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
  // What it wrote last may still stand in the pipes; a terminal keeps its end open, with us.
  static_cast<void>(waitUntil([this] {
    pollfd terminal{terminalSource_.get(), POLLIN, 0};
    const bool isEmpty = ::poll(&terminal, 1, 0) != 1 || (terminal.revents & POLLIN) == 0;
    return !outputSource_.isOpen() && !errorSource_.isOpen() && isEmpty;
  }));
  return status_;
}

void ChildProcess::readSome() {
  constexpr int kMomentMilliseconds = 5;
  std::array<pollfd, 3> sources = {{{outputSource_.get(), POLLIN, 0},
                                    {errorSource_.get(), POLLIN, 0},
                                    {terminalSource_.get(), POLLIN, 0}}};
  if (::poll(sources.data(), sources.size(), kMomentMilliseconds) <= 0) return;
  if (sources[0].revents != 0) drain(outputSource_, output_);
  if (sources[1].revents != 0) drain(errorSource_, error_);
  // The other side of a terminal comes and goes as processes open it.
  if ((sources[2].revents & POLLIN) != 0) drain(terminalSource_, terminal_);
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
