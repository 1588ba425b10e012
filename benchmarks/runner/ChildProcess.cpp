#include "benchmarks/runner/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <fstream>
#include <iterator>

#include "benchmarks/support/MainProgram.h"
#include "benchmarks/support/Stopwatch.h"

namespace quillbay::bench {
namespace {

constexpr int kLimitMilliseconds = 180'000;

/// Where a program's standard streams lead; standard error stays.
class StreamActions {
 public:
  explicit StreamActions(const std::filesystem::path& outputFile) {
    posix_spawn_file_actions_init(&actions_);
    posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, outputFile.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600);
  }
  ~StreamActions() { posix_spawn_file_actions_destroy(&actions_); }
  StreamActions(const StreamActions&) = delete;
  StreamActions& operator=(const StreamActions&) = delete;

  const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_ = {};
};

pid_t spawn(const Command& command, const StreamActions& streams) {
  pid_t pid = 0;
  if (posix_spawnp(&pid, command[0].c_str(), streams.get(), nullptr,
                   argumentPointers(command).data(), environ) != 0) {
    fail("cannot start " + command[0]);
  }
  return pid;
}

/// Waits for the end without reaping; ends a program that takes too long.
void awaitEnd(pid_t pid, const std::string& name) {
  // glibc 2.36 declares its own pidfd_open for C alone.
  const int descriptor = static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
  pollfd entry = {descriptor, POLLIN, 0};
  int ready = 0;
  do {
    ready = poll(&entry, 1, kLimitMilliseconds);
  } while (ready < 0 && errno == EINTR);
  close(descriptor);
  if (ready > 0) return;
  kill(pid, SIGKILL);
  waitpid(pid, nullptr, 0);
  fail(name + " takes too long");
}

double seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + (static_cast<double>(time.tv_usec) * 1e-6);
}

}  // namespace

std::vector<char*> argumentPointers(const Command& command) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (const auto& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  return arguments;
}

Usage runCommand(const Command& command, const std::filesystem::path& outputFile) {
  const StreamActions streams(outputFile);
  const Stopwatch stopwatch;
  const pid_t pid = spawn(command, streams);
  awaitEnd(pid, command[0]);
  int status = 0;
  rusage usage = {};
  wait4(pid, &status, 0, &usage);
  const double wallSeconds = stopwatch.seconds();
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) fail(command[0] + " failed");
  return {wallSeconds, seconds(usage.ru_utime) + seconds(usage.ru_stime), usage.ru_maxrss};
}

std::string readText(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace quillbay::bench
