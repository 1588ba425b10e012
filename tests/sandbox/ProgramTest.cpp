#include <gtest/gtest.h>
#include <sys/wait.h>

#include <csignal>
#include <cstdio>

#include "sandbox/support/Files.h"
#include "tests/sandbox/RawClient.h"
#include "tests/sandbox/RunningSandbox.h"

namespace quillbay::sandbox {
namespace {

/// The program itself, with its standard output and error in one pipe.
class Program {
 public:
  explicit Program(const std::string& arguments)
      : output_(::popen(
            ("echo $$; exec " QUILLBAY_SANDBOX_PROGRAM " " + arguments + " 2>&1").c_str(), "re")),
        process_(std::stoi(line())) {}

  std::string line() {
    std::string text;
    for (int c = 0; (c = std::fgetc(output_)) != EOF && c != '\n';) text += static_cast<char>(c);
    return text;
  }

  void signal(int number) const { ::kill(process_, number); }

  int exitStatus() const {
    while (std::fgetc(output_) != EOF) {
    }
    const int status = ::pclose(output_);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  std::FILE* output_;
  pid_t process_;
};

TEST(Program, AnnouncesItselfAndStopsOnASignalWithConnectionsOpen) {
  const TemporaryFolder folder;
  for (const int number : {SIGINT, SIGTERM}) {
    const auto data = folder / "it's data";
    const auto readyFile = folder / "ready";
    Program program("--port 0 --data \"" + data.string() + "\" --ready-file " + readyFile.string());
    const std::string route = program.line();
    const std::string prefix = "export QUILLBAY_CONNECT_TO=cloud.quillbay.example:443:127.0.0.1:";
    ASSERT_TRUE(route.starts_with(prefix)) << route;
    const std::string trust = program.line();
    EXPECT_TRUE(trust.starts_with("export QUILLBAY_CACERT='")) << trust;
    EXPECT_TRUE(trust.ends_with("/it'\\''s data/tls/ca.pem'")) << trust;
    EXPECT_EQ(readFile(readyFile), route + "\n" + trust + "\n");
    const RawClient client(std::stoi(route.substr(prefix.size())));
    program.signal(number);
    EXPECT_EQ(program.exitStatus(), 0);
    EXPECT_FALSE(std::filesystem::exists(readyFile));
  }
}

}  // namespace
}  // namespace quillbay::sandbox
