#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>

#include "sandbox/support/Files.h"
#include "tests/sandbox/RawClient.h"
#include "tests/sandbox/RunningSandbox.h"

namespace quillbay::sandbox {
namespace {

/// The program itself, with its standard output and error in one pipe.
class Program {
 public:
  explicit Program(std::vector<std::string> arguments) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    output_ = FileDescriptor(ends[0]);
    const FileDescriptor writing(ends[1]);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, writing.get(), STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, writing.get(), STDERR_FILENO);
    arguments.insert(arguments.begin(), QUILLBAY_SANDBOX_PROGRAM);
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    posix_spawn(&process_, QUILLBAY_SANDBOX_PROGRAM, &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
  }

  std::string line() {
    std::string text;
    for (char c = 0; ::read(output_.get(), &c, 1) == 1 && c != '\n';) text += c;
    return text;
  }

  void signal(int number) const { ::kill(process_, number); }

  int exitStatus() const {
    int status = -1;
    ::waitpid(process_, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  FileDescriptor output_;
  pid_t process_ = -1;
};

TEST(Program, AnnouncesItselfAndStopsOnASignalWithConnectionsOpen) {
  const TemporaryFolder folder;
  for (const int number : {SIGINT, SIGTERM}) {
    const auto data = folder.path() / "it's data";
    const auto readyFile = folder.path() / "ready";
    Program program({"--port", "0", "--data", data, "--ready-file", readyFile});
    const std::string route = program.line();
    const std::string prefix = "export QUILLBAY_CONNECT_TO=cloud.quillbay.example:443:127.0.0.1:";
    ASSERT_TRUE(route.starts_with(prefix)) << route;
    const std::string trust = program.line();
    EXPECT_EQ(trust,
              "export QUILLBAY_CACERT='" + folder.path().string() + "/it'\\''s data/tls/ca.pem'");
    EXPECT_EQ(readFile(readyFile), route + "\n" + trust + "\n");
    const RawClient client(std::stoi(route.substr(prefix.size())));
    program.signal(number);
    EXPECT_EQ(program.exitStatus(), 0);
    EXPECT_FALSE(std::filesystem::exists(readyFile));
  }
}

TEST(Program, TellsUsageFromFailure) {
  const TemporaryFolder folder;
  EXPECT_EQ(Program({"--version"}).exitStatus(), 0);
  EXPECT_EQ(Program({"--port", "70000"}).exitStatus(), 2);
  EXPECT_EQ(Program({"surplus"}).exitStatus(), 2);
  writeFileAtomically(folder.path() / "file", "");
  Program failing({"--port", "0", "--data", folder.path() / "file"});
  EXPECT_TRUE(failing.line().starts_with("quillbay-sandbox: "));
  EXPECT_EQ(failing.exitStatus(), 1);
}

}  // namespace
}  // namespace quillbay::sandbox
