#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "ChildProcess.h"
#include "FakeService.h"
#include "TemporaryFolder.h"
#include "TestCertificates.h"

namespace quillbay::test {

/// The program against a service of the test's.
class ProgramTest : public testing::Test {
 protected:
  using Setup = ChildProcess::Setup;
  using Stream = ChildProcess::Stream;
  using Call = FakeService::Call;

  /// The program, on its way to the service.
  std::unique_ptr<ChildProcess> start(Setup setup) {
    const std::string port = std::to_string(service_.server().port());
    setup.environment.push_back("QUILLBAY_CONNECT_TO=cloud.quillbay.example:443:127.0.0.1:" + port);
    setup.environment.push_back("QUILLBAY_CACERT=" +
                                TestCertificates::shared().authorityPath().string());
    setup.environment.insert(setup.environment.begin(), "XDG_STATE_HOME=" + state_.string());
    return std::make_unique<ChildProcess>(setup);
  }

  /// The program, once it has ended with `status`.
  std::unique_ptr<ChildProcess> run(int status, Setup setup) {
    auto program = start(std::move(setup));
    EXPECT_EQ(program->waitForExit(), status) << program->error() << program->terminal();
    return program;
  }

  /// Has every reply to `call` wait at the gate, which is that of the last stall.
  void stall(Call call) { gate_ = service_.hold(call); }

  /// The program, once it waits for the stalled reply to `call`.
  std::unique_ptr<ChildProcess> startStalled(Call call, Setup setup) {
    stall(call);
    auto program = start(std::move(setup));
    EXPECT_TRUE(program->waitUntil([&] { return count(call) > 0; })) << program->error();
    return program;
  }

  /// Sends Ctrl-C and sees the program end as cancelled.
  static void interrupt(ChildProcess& program) {
    program.signal(SIGINT);
    EXPECT_EQ(program.waitForExit(), 130) << program.error();
  }

  std::size_t count(Call call) const { return service_.requests(call).size(); }

  /// As the first session was created with it: in Base64.
  std::string sentPassword() const {
    const std::string body = service_.requests(Call::createSession).at(0).body;
    return nlohmann::json::parse(body).at("config").at("p");
  }

  static std::vector<nlohmann::json> events(const ChildProcess& program) {
    std::vector<nlohmann::json> events;
    std::istringstream lines(program.output());
    for (std::string line; std::getline(lines, line);) {
      events.push_back(nlohmann::json::parse(line, nullptr, false));
      EXPECT_TRUE(events.back().is_object()) << line;
    }
    return events;
  }

  const TemporaryFolder folder_;
  const std::filesystem::path state_ = folder_ / "state";
  const std::string file_ = folder_.write("file", "content");
  const std::string link_ = std::string(FakeService::link) + "\n";
  std::shared_ptr<Gate> gate_;
  FakeService service_;
};

}  // namespace quillbay::test
