#pragma once

#include <gmock/gmock.h>

#include <sstream>

#include "ChildProcess.h"
#include "FakeService.h"
#include "TestCertificates.h"

namespace quillbay::test {

using nlohmann::json;
using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// The program against a service of the test's. Commands run in the test's folder.
class ProgramTest : public testing::Test {
 protected:
  using Call = FakeService::Call;
  using Program = std::unique_ptr<ChildProcess>;

  Program start(const std::string& command, std::string_view input = "") {
    const std::string environment =
        "PATH='" QUILLBAY_PROGRAM_FOLDER
        ":/usr/bin:/bin' XDG_STATE_HOME=\"$PWD/state\" QUILLBAY_CACERT='" +
        TestCertificates::shared().authorityPath().string() +
        "' QUILLBAY_CONNECT_TO=cloud.quillbay.example:443:127.0.0.1:" +
        std::to_string(service_.server().port()) + " ";
    return std::make_unique<ChildProcess>(folder_.path(), environment + command, input);
  }

  /// The program, once it has ended with `status`.
  Program run(int status, const std::string& command, std::string_view input = "") {
    auto program = start(command, input);
    EXPECT_EQ(program->waitForExit(), status) << program->error() << program->terminal();
    return program;
  }

  /// Has every reply to `call` wait at the gate, which is that of the last stall.
  void stall(Call call, int item = 0) { gate_ = service_.hold(call, std::nullopt, item); }

  /// The program, once it waits for the stalled reply to `call`.
  Program startStalled(Call call, const std::string& command) {
    stall(call);
    return startUntil(call, command);
  }

  /// The program, once it has made one more `call`.
  Program startUntil(Call call, const std::string& command) {
    const std::size_t before = count(call);
    auto program = start(command);
    EXPECT_TRUE(program->waitUntil([&] { return count(call) > before; })) << program->error();
    return program;
  }

  /// Sends Ctrl-C and sees the program end as cancelled.
  static void interrupt(ChildProcess& program) {
    program.signal(SIGINT);
    EXPECT_EQ(program.waitForExit(), 130) << program.error();
  }

  std::size_t count(Call call) const { return service_.requests(call).size(); }

  /// The body of the newest request for a session.
  json sentSession() const {
    return json::parse(service_.requests(Call::createSession).back().body);
  }

  static std::vector<json> events(const ChildProcess& program) {
    std::vector<json> events;
    std::istringstream lines(program.output());
    for (std::string line; std::getline(lines, line);) {
      events.push_back(json::parse(line, nullptr, false));
      EXPECT_TRUE(events.back().is_object()) << line;
    }
    return events;
  }

  const TemporaryFolder folder_;
  const std::string file_ = folder_.write("file", "content");
  const std::string other_ = folder_.write("other", "more");
  const std::string link_ = FakeService::link;
  std::shared_ptr<Gate> gate_;
  FakeService service_;
};

}  // namespace quillbay::test
