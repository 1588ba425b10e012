#include "ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
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
  std::vector<std::string> variables{"PATH=/usr/bin:/bin", "LC_ALL=C.UTF-8", "TERM=xterm"};
  for (const char* name : {"ASAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS"}) {
    if (const char* value = ::getenv(name)) variables.push_back(std::string(name) + "=" + value);
  }
  // The shell takes the last of two with the same name.
  variables.insert(variables.end(), setup.environment.begin(), setup.environment.end());
  return variables;
}

/// What a shell is told about a stream.
std::string redirection(const char* sign, Stream stream, const std::string& path) {
  if (stream == Stream::terminal) return "";
  return sign + (stream == Stream::closed ? "&-" : path);
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (std::string& text : texts) result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

}  // namespace

ChildProcess::ChildProcess(const Setup& setup) {
  std::string script;
  for (const int number : setup.ignoredSignals) script += "trap '' " + std::to_string(number) + ";";
  script += R"(exec "$0" "$@")";
  if (setup.input) script += " <" + folder_.write("input", *setup.input).string();
  script += redirection(" >", setup.output, folder_.write("output", ""));
  script += redirection(" 2>", setup.error, folder_.write("error", ""));
  if (setup.output == Stream::pipe) {
    std::filesystem::remove(folder_ / "output");
    require(::mkfifo((folder_ / "output").c_str(), 0600) == 0, "mkfifo");
    outputSource_ =
        FileDescriptor(::open((folder_ / "output").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  }
  std::vector<std::string> words{"/bin/sh", "-c", script, setup.program};
  words.insert(words.end(), setup.arguments.begin(), setup.arguments.end());
  std::vector<std::string> variables = environmentOf(setup);
  const std::vector<char*> wordPointers = pointers(words);
  const std::vector<char*> variablePointers = pointers(variables);

  winsize size{.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
  int terminal = -1;
  process_ = ::forkpty(&terminal, nullptr, nullptr, &size);
  require(process_ >= 0, "forkpty");
  if (process_ == 0) {
    for (const int number : {SIGINT, SIGHUP, SIGTERM}) ::signal(number, SIG_DFL);
    ::execve(wordPointers[0], wordPointers.data(), variablePointers.data());
    ::_exit(127);
  }
  ::fcntl(terminal, F_SETFD, FD_CLOEXEC);
  terminal_ = FileDescriptor(terminal);
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
  return waitUntil([&] { return shown_.contains(text); });
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

void ChildProcess::signal(int number) const { ::kill(process_, number); }

void ChildProcess::type(const std::string& text) const {
  const auto length = static_cast<ssize_t>(text.size());
  require(::write(terminal_.get(), text.data(), text.size()) == length, "write");
}

bool ChildProcess::terminalEchoes() const {
  termios settings{};
  require(::tcgetattr(terminal_.get(), &settings) == 0, "tcgetattr");
  return (settings.c_lflag & ECHO) != 0;
}

void ChildProcess::turnEchoOn() const {
  termios settings{};
  ::tcgetattr(terminal_.get(), &settings);
  settings.c_lflag |= static_cast<tcflag_t>(ECHO);
  ::tcsetattr(terminal_.get(), TCSANOW, &settings);
}

}  // namespace quillbay::test
