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
  Setup reaching(Setup setup) const;

  /// Has every reply to `call` wait at the gate that is returned.
  std::shared_ptr<Gate> stall(Call call);
  /// The service knows of `name` ("create", "store item-1", ...).
  bool hasCalled(const std::string& name) const;
  std::size_t count(const std::string& name) const;

  /// As the first session was created with it: in Base64.
  std::string sentPassword() const;

  static std::vector<nlohmann::json> events(const std::string& output);

  const TemporaryFolder folder_;
  const std::string file_ = folder_.write("file", "content");
  const std::string link_ = std::string(FakeService::link) + "\n";
  FakeService service_;
};

}  // namespace quillbay::test
