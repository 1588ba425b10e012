#include "benchmarks/runner/TalkingProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <vector>

#include "benchmarks/support/MainProgram.h"

namespace quillbay::bench {

TalkingProcess::TalkingProcess(const Command& command) : name_(command[0]) {
  std::array<int, 2> input = {};
  std::array<int, 2> output = {};
  if (pipe2(input.data(), O_CLOEXEC) != 0 || pipe2(output.data(), O_CLOEXEC) != 0) {
    fail("cannot make pipes");
  }
  input_.reset(fdopen(input[1], "w"));
  output_.reset(fdopen(output[0], "r"));

  posix_spawn_file_actions_t actions = {};
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
  const int code = posix_spawn(&pid_, name_.c_str(), &actions, nullptr,
                               argumentPointers(command).data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(input[0]);
  close(output[1]);
  if (code != 0) fail("cannot start " + name_);
}

TalkingProcess::~TalkingProcess() {
  input_.reset();
  waitpid(pid_, nullptr, 0);
}

void TalkingProcess::writeLine(const std::string& line) {
  std::fprintf(input_.get(), "%s\n", line.c_str());
  std::fflush(input_.get());
}

std::string TalkingProcess::readLine() {
  std::string line;
  for (int character = std::fgetc(output_.get()); character != '\n';
       character = std::fgetc(output_.get())) {
    if (character == EOF) fail(name_ + " has ended");
    line += static_cast<char>(character);
  }
  return line;
}

}  // namespace quillbay::bench
