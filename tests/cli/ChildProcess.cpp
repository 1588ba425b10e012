#include "ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <spawn.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include "TemporaryFolder.h"
#include "Waiting.h"

namespace quillbay::test {
namespace {

using Clock = std::chrono::steady_clock;
using Stream = ChildProcess::Stream;

void require(bool holds, const char* what) {
  if (!holds) throw std::runtime_error(what);
}

struct Pipe {
  FileDescriptor source;
  FileDescriptor sink;
};

Pipe makePipe() {
  std::array<int, 2> ends{};
  require(::pipe2(ends.data(), O_CLOEXEC) == 0, "pipe2");
  return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

struct Terminal {
  FileDescriptor controller;
  std::string path;
};

Terminal makeTerminal() {
  winsize size{.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
  int controller = -1;
  int device = -1;
  std::array<char, 64> path{};
  require(::openpty(&controller, &device, path.data(), nullptr, &size) == 0, "openpty");
  ::fcntl(controller, F_SETFD, FD_CLOEXEC);
  ::close(device);
  return {FileDescriptor(controller), path.data()};
}

class SpawnSettings {
 public:
  SpawnSettings() {
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawnattr_init(&attributes);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;
  ~SpawnSettings() {
    ::posix_spawn_file_actions_destroy(&actions);
    ::posix_spawnattr_destroy(&attributes);
  }

  void open(int descriptor, const std::string& path, int flags) {
    ::posix_spawn_file_actions_addopen(&actions, descriptor, path.c_str(), flags, 0);
  }
  void duplicate(const FileDescriptor& from, int to) {
    ::posix_spawn_file_actions_adddup2(&actions, from.get(), to);
  }

  /// A session of its own, so that the terminal can become its controlling one, and no signal
  /// settings of ours.
  void isolate() {
    sigset_t all;
    sigset_t none;
    ::sigfillset(&all);
    ::sigemptyset(&none);
    ::posix_spawnattr_setsigdefault(&attributes, &all);
    ::posix_spawnattr_setsigmask(&attributes, &none);
    ::posix_spawnattr_setflags(&attributes,
                               POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
  }

  posix_spawn_file_actions_t actions{};
  posix_spawnattr_t attributes{};
};

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  result.reserve(texts.size() + 1);
  for (std::string& text : texts) result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

/// The program, behind a shell that ignores the signals, if there are any to ignore.
std::vector<std::string> commandLine(const ChildProcess::Setup& setup) {
  std::vector<std::string> words{setup.program};
  if (!setup.ignoredSignals.empty()) {
    std::string numbers;
    for (const int signal : setup.ignoredSignals) numbers += " " + std::to_string(signal);
    words = {"/bin/sh", "-c", "trap ''" + numbers + R"(; exec "$0" "$@")", setup.program};
  }
  words.insert(words.end(), setup.arguments.begin(), setup.arguments.end());
  return words;
}

/// Appends what `source` has; closes it at its end.
void drain(FileDescriptor& source, std::string& text) {
  std::array<char, 65536> buffer{};
  const ssize_t count = ::read(source.get(), buffer.data(), buffer.size());
  if (count > 0) return void(text.append(buffer.data(), static_cast<std::size_t>(count)));
  if (count == 0 || errno != EINTR) source.reset();
}

}  // namespace

ChildProcess::ChildProcess(const Setup& setup) { spawn(setup); }

ChildProcess::~ChildProcess() {
  if (status_) return;
  ::kill(process_, SIGKILL);
  ::waitpid(process_, nullptr, 0);
}

void ChildProcess::spawn(const Setup& setup) {
  SpawnSettings settings;
  settings.isolate();
  Pipe input = makePipe();
  Pipe output = makePipe();
  Pipe error = makePipe();
  Terminal terminal = makeTerminal();

  const bool usesTerminal =
      setup.hasTerminal || setup.output == Stream::terminal || setup.error == Stream::terminal;
  // The first terminal that the leader of a session opens becomes its controlling one.
  if (usesTerminal) settings.open(STDIN_FILENO, terminal.path, O_RDWR);
  settings.duplicate(input.source, STDIN_FILENO);
  const auto connect = [&](Stream stream, const Pipe& pipe, int descriptor) {
    if (stream == Stream::terminal) settings.open(descriptor, terminal.path, O_RDWR);
    if (stream == Stream::pipe || stream == Stream::brokenPipe) {
      settings.duplicate(pipe.sink, descriptor);
    }
    if (stream == Stream::full) settings.open(descriptor, "/dev/full", O_WRONLY);
    if (stream == Stream::closed) {
      ::posix_spawn_file_actions_addclose(&settings.actions, descriptor);
    }
  };
  // Standard error first: a number that is closed is the one that the next file gets.
  connect(setup.error, error, STDERR_FILENO);
  connect(setup.output, output, STDOUT_FILENO);

  std::vector<std::string> words = commandLine(setup);
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
  require(::posix_spawn(&process_, words.front().c_str(), &settings.actions, &settings.attributes,
                        pointers(words).data(), pointers(variables).data()) == 0,
          "posix_spawn");

  if (setup.output == Stream::pipe) outputSource_ = std::move(output.source);
  if (setup.error == Stream::pipe) errorSource_ = std::move(error.source);
  if (usesTerminal) terminalSource_ = std::move(terminal.controller);
  inputSink_ = std::move(input.sink);
  if (!setup.input) return;
  const auto length = static_cast<ssize_t>(setup.input->size());
  require(::write(inputSink_.get(), setup.input->data(), setup.input->size()) == length, "write");
  inputSink_.reset();
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

std::string ChildProcess::visibleArguments() const {
  return readFile("/proc/" + std::to_string(process_) + "/cmdline");
}

bool ChildProcess::blocks(int signal) const {
  const std::string status = readFile("/proc/" + std::to_string(process_) + "/status");
  const std::size_t field = status.find("SigBlk:");
  if (field == std::string::npos) return false;
  const unsigned long long mask = std::strtoull(status.c_str() + field + 7, nullptr, 16);
  return (mask >> (signal - 1) & 1U) != 0;
}

bool ChildProcess::terminalEchoes() const {
  termios settings{};
  require(::tcgetattr(terminalSource_.get(), &settings) == 0, "tcgetattr");
  return (settings.c_lflag & ECHO) != 0;
}

}  // namespace quillbay::test
