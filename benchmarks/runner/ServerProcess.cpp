#include "benchmarks/runner/ServerProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <sstream>

#include "benchmarks/support/Addresses.h"
#include "benchmarks/support/MainProgram.h"

namespace quillbay::bench {

ServerProcess::ServerProcess(const std::filesystem::path& program,
                             const std::filesystem::path& folder)
    : authorityFile_(folder / "ca.pem"),
      toServer_(nullptr, std::fclose),
      fromServer_(nullptr, std::fclose) {
  std::array<int, 2> input = {};
  std::array<int, 2> output = {};
  if (pipe2(input.data(), O_CLOEXEC) != 0 || pipe2(output.data(), O_CLOEXEC) != 0) {
    fail("cannot make pipes");
  }
  toServer_.reset(fdopen(input[1], "w"));
  fromServer_.reset(fdopen(output[0], "r"));

  posix_spawn_file_actions_t actions = {};
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
  std::string path = program;
  std::string argument = folder;
  const std::array<char*, 3> arguments = {path.data(), argument.data(), nullptr};
  const int code = posix_spawn(&pid_, path.c_str(), &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(input[0]);
  close(output[1]);
  if (code != 0) fail("cannot start " + path);

  std::string word;
  std::string port;
  std::istringstream(readLine()) >> word >> port;
  route_ = loopbackRoute(port);
}

ServerProcess::~ServerProcess() {
  toServer_.reset();
  waitpid(pid_, nullptr, 0);
}

std::string ServerProcess::readLine() {
  std::string line;
  for (int character = std::fgetc(fromServer_.get()); character != '\n';
       character = std::fgetc(fromServer_.get())) {
    if (character == EOF) fail("the server has ended");
    line += static_cast<char>(character);
  }
  return line;
}

std::map<std::string, ServerProcess::HostCounts> ServerProcess::takeCounts() {
  std::fputs("counts\n", toServer_.get());
  std::fflush(toServer_.get());
  std::map<std::string, HostCounts> counts;
  for (std::string line = readLine(); line != "end"; line = readLine()) {
    std::istringstream words(line);
    std::string host;
    words >> host;
    HostCounts& entry = counts[host];
    words >> entry.connections >> entry.requests >> entry.bodyByteCount;
  }
  return counts;
}

}  // namespace quillbay::bench
