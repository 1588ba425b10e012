#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "ChildProcess.h"
#include "FakeService.h"
#include "TemporaryFolder.h"

namespace quillbay::test {

/// The program against a service of the test's.
class ProgramTest : public testing::Test {
 protected:
  using Arguments = std::vector<std::string>;
  using Setup = ChildProcess::Setup;
  using Stream = ChildProcess::Stream;
  using Call = FakeService::Call;

  /// `setup` with the way to the service in its environment.
  Setup reaching(Setup setup);

  /// The program, once it has ended with `status`.
  std::unique_ptr<ChildProcess> run(int status, Setup setup);

  /// Has every reply to `call` wait at the gate.
  void stall(Call call);
  /// The program, once it waits for the stalled reply to `call`.
  std::unique_ptr<ChildProcess> startStalled(Call call, Setup setup);
  /// Sends Ctrl-C and sees the program end as cancelled.
  static void interrupt(ChildProcess& program);

  std::size_t count(Call call) const { return service_.requests(call).size(); }

  /// As the first session was created with it: in Base64.
  std::string sentPassword() const;

  static std::vector<nlohmann::json> events(const std::string& output);

  const TemporaryFolder folder_;
  const std::string file_ = folder_.write("file", "content");
  const std::string link_ = std::string(FakeService::link) + "\n";
  const std::shared_ptr<Gate> gate_ = std::make_shared<Gate>();
  FakeService service_;
};

}  // namespace quillbay::test
