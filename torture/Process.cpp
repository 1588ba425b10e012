#include "Process.h"

#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>

namespace quillbay::torture {

Process::Process(const std::string& command) {
  const std::string script = "exec " + command;
  std::array<char*, 4> arguments{const_cast<char*>("sh"), const_cast<char*>("-c"),
                                 const_cast<char*>(script.c_str()), nullptr};
  if (::posix_spawn(&process_, "/bin/sh", nullptr, nullptr, arguments.data(), environ) != 0) {
    throw std::runtime_error("cannot start: " + command);
  }
  ending_ = host::FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, process_, 0)));
}

Process::~Process() {
  if (status_) return;
  signal(SIGKILL);
  ::waitpid(process_, nullptr, 0);
}

void Process::signal(int number) const {
  if (!status_) ::kill(process_, number);
}

std::optional<int> Process::waitFor(std::chrono::milliseconds bound) {
  pollfd ending{ending_.get(), POLLIN, 0};
  if (status_ || ::poll(&ending, 1, static_cast<int>(bound.count())) <= 0) return status_;
  int status = 0;
  ::waitpid(process_, &status, 0);
  status_ = WIFEXITED(status) ? WEXITSTATUS(status) : kSignalled + WTERMSIG(status);
  return status_;
}

}  // namespace quillbay::torture
