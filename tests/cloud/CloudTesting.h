#pragma once

#include <QuillbayCloud/Classes/SessionController.h>
#include <QuillbayCloud/service/Webservice.h>
#include <QuillbayPlatform/JSONDecoder.h>
#include <gtest/gtest.h>

#include <any>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "FakeService.h"
#include "TemporaryFolder.h"

namespace quillbay::test {

template <class T>
auto decoded(std::string_view json,
             platform::JSONDatePolicy policy = platform::JSONDatePolicy::secondsSince2001) {
  return platform::JSONDecoder(policy).decode<T>(json);
}

/// A host's logger. Lines read "LEVEL FUNCTION: MESSAGE".
struct RecordingLogger {
  using Message = std::function<std::string()>;
  static void debug(const Message& message, std::string_view file, std::string_view function,
                    int line, const std::any& context);
  static void error(const Message& message, std::string_view file, std::string_view function,
                    int line, const std::any& context);

  /// Installs it in place of another, without the lines of earlier tests.
  static void install();
  static std::vector<std::string> lines();
};

/// What a host's callbacks capture: counts its living copies' owner and fails the test when it is
/// destroyed on another thread than the test's.
class HostObject {
 public:
  explicit HostObject(int& livingCount);
  HostObject(const HostObject&) = delete;
  HostObject& operator=(const HostObject&) = delete;
  ~HostObject();

 private:
  int& livingCount_;
  std::thread::id thread_ = std::this_thread::get_id();
};

/// One run of a controller and everything that its host is told, in order: "session",
/// then "done" or the error's case and values ("webservice: status 410: Gone").
class Host {
 public:
  explicit Host(std::vector<platform::URL> files, cloud::SessionConfiguration configuration =
                                                      cloud::SessionConfiguration::default_());

  void share();
  /// Runs the main queue until the run's callbacks are gone: nothing can come any more.
  [[nodiscard]] bool waitForEnd();

  /// Called inside the callbacks, after they are noted.
  std::function<void()> onSession = [] {};
  std::function<void()> onEnd = [] {};

  std::shared_ptr<cloud::SessionController> controller;
  std::vector<std::string> events;
  std::vector<cloud::Session> sessions;
  int livingObjectCount = 0;
};

/// The library against a service of the test's, with a logger and files to share.
class ServiceTest : public testing::Test {
 protected:
  using Call = FakeService::Call;
  using Lines = std::vector<std::string>;

  ServiceTest();

  platform::URL file(const std::string& name, std::string_view content) const;
  /// "file-1" to "file-N", each with the content "content of file-1" or so.
  std::vector<platform::URL> files(int count) const;

  [[nodiscard]] bool waitForCall(Call call) const;

  const Reply gone_ = Reply::json(R"({"message":"Gone","status":410})", 410);
  const std::thread::id thread_ = std::this_thread::get_id();
  const TemporaryFolder folder_;
  FakeService service_;
  const std::shared_ptr<const cloud::Webservice> webservice_ =
      cloud::Webservice::create(cloud::RequestFactory::create("host-1"));
};

}  // namespace quillbay::test
