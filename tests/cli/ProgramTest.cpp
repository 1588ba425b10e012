#include "ProgramTest.h"

#include <algorithm>
#include <sstream>

#include "TestCertificates.h"

namespace quillbay::test {

ChildProcess::Setup ProgramTest::reaching(Setup setup) const {
  const std::string port = std::to_string(const_cast<FakeService&>(service_).server().port());
  setup.environment.push_back("QUILLBAY_CONNECT_TO=cloud.quillbay.example:443:127.0.0.1:" + port);
  setup.environment.push_back("QUILLBAY_CACERT=" +
                              TestCertificates::shared().authorityPath().string());
  return setup;
}

std::shared_ptr<Gate> ProgramTest::stall(Call call) {
  auto gate = std::make_shared<Gate>();
  service_.setHook(call, [gate](const Request&, Reply ordinary) {
    ordinary.sendAfter = gate;
    return ordinary;
  });
  return gate;
}

bool ProgramTest::hasCalled(const std::string& name) const { return count(name) > 0; }

std::size_t ProgramTest::count(const std::string& name) const {
  const auto calls = service_.calls();
  return static_cast<std::size_t>(std::count(calls.begin(), calls.end(), name));
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
