#include "ProgramTest.h"

#include <csignal>
#include <sstream>

#include "TestCertificates.h"

namespace quillbay::test {

ChildProcess::Setup ProgramTest::reaching(Setup setup) {
  const std::string port = std::to_string(service_.server().port());
  setup.environment.push_back("QUILLBAY_CONNECT_TO=cloud.quillbay.example:443:127.0.0.1:" + port);
  setup.environment.push_back("QUILLBAY_CACERT=" +
                              TestCertificates::shared().authorityPath().string());
  return setup;
}

std::unique_ptr<ChildProcess> ProgramTest::run(int status, Setup setup) {
  auto program = std::make_unique<ChildProcess>(reaching(std::move(setup)));
  EXPECT_EQ(program->waitForExit(), status) << program->error() << program->terminal();
  return program;
}

void ProgramTest::stall(Call call) {
  service_.setHook(call, [gate = gate_](const Request&, Reply ordinary) {
    ordinary.sendAfter = gate;
    return ordinary;
  });
}

std::unique_ptr<ChildProcess> ProgramTest::startStalled(Call call, Setup setup) {
  stall(call);
  auto program = std::make_unique<ChildProcess>(reaching(std::move(setup)));
  EXPECT_TRUE(program->waitUntil([&] { return count(call) > 0; })) << program->error();
  return program;
}

void ProgramTest::interrupt(ChildProcess& program) {
  program.signal(SIGINT);
  EXPECT_EQ(program.waitForExit(), 130) << program.error();
}

std::string ProgramTest::sentPassword() const {
  const std::string body = service_.requests(Call::createSession).at(0).body;
  return nlohmann::json::parse(body).at("config").at("p");
}

std::vector<nlohmann::json> ProgramTest::events(const std::string& output) {
  std::vector<nlohmann::json> events;
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    events.push_back(nlohmann::json::parse(line, nullptr, false));
    EXPECT_TRUE(events.back().is_object()) << line;
  }
  return events;
}

}  // namespace quillbay::test
